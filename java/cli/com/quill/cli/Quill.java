package com.quill.cli;

import com.quill.inspect.FileNames;
import java.io.FileDescriptor;
import java.io.FileOutputStream;
import java.io.PrintWriter;
import picocli.CommandLine;
import picocli.CommandLine.Command;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Option;
import picocli.CommandLine.ParameterException;
import picocli.CommandLine.Spec;

/** The command line's entry. */
@Command(name = "quill", description = "Writes HEIF pictures and looks into them.",
        version = "quill ${sys:quill.version}",
        subcommands = {StillCommand.class, LiveCommand.class, InspectCommand.class},
        synopsisSubcommandLabel = "COMMAND")
public final class Quill implements Runnable {
    private static final int kWrongUsage = 2;

    @Spec
    private CommandSpec mSpec;

    @Option(names = {"-h", "--help"}, usageHelp = true, description = "Shows this help.")
    private boolean mHelp;

    @Option(names = {"-V", "--version"}, versionHelp = true, description = "Shows the version.")
    private boolean mVersion;

    public static void main(String[] arguments) {
        System.setProperty("java.awt.headless", "true");
        CommandLine command = commandLine();
        command.setOut(printer(FileDescriptor.out)).setErr(printer(FileDescriptor.err));
        System.exit(command.execute(arguments));
    }

    private static PrintWriter printer(FileDescriptor stream) {
        return new PrintWriter(new FileOutputStream(stream), true, FileNames.kCharset);
    }

    /** The parser, ready to execute; its output and error writers can be replaced. */
    static CommandLine commandLine() {
        return new CommandLine(new Quill()).setParameterExceptionHandler(Quill::reportWrongUsage);
    }

    @Override
    public void run() {
        throw new ParameterException(mSpec.commandLine(), "a command is missing");
    }

    // One line, not the whole help: what is wrong stays visible.
    private static int reportWrongUsage(ParameterException e, String[] arguments) {
        CommandLine command = e.getCommandLine();
        command.getErr().println(FailureText.line("quill: " + e.getMessage()));
        command.getErr().println("'" + command.getCommandSpec().qualifiedName() + " --help' lists what can be given.");
        return kWrongUsage;
    }
}
