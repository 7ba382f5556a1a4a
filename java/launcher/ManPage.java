import com.quill.cli.Quill;
import java.util.stream.Collectors;
import picocli.CommandLine;
import picocli.CommandLine.Model.ArgSpec;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Model.PositionalParamSpec;

/** Prints quill(1) out of the command line's own help. */
final class ManPage {
    public static void main(String[] arguments) {
        CommandSpec quill = new CommandLine(new Quill()).getCommandSpec();
        print(".TH QUILL 1 \"\" \"%s\" \"User Commands\"", quill.version()[0]);
        section("NAME");
        print("quill \\- %s", escaped(text(quill.usageMessage().description())));
        section("SYNOPSIS");
        for (CommandLine command : quill.subcommands().values()) synopsis(command.getCommandSpec());
        section("COMMANDS");
        for (CommandLine command : quill.subcommands().values()) describe(command.getCommandSpec());
        section("OPTIONS");
        quill.options().forEach(ManPage::option);
        section("SEE ALSO");
        print("heif-info(1), exiftool(1)");
    }

    private static void synopsis(CommandSpec command) {
        String required = command.options().stream().filter(OptionSpec::required)
                .map(option -> " \\fB" + escaped(option.longestName()) + "\\fR \\fI" + option.paramLabel() + "\\fR")
                .collect(Collectors.joining());
        String parameters = command.positionalParameters().stream()
                .map(file -> " \\fI" + file.paramLabel() + "\\fR" + (file.arity().max() > 1 ? "..." : ""))
                .collect(Collectors.joining());
        print("\\fBquill %s\\fR%s%s [\\fIOPTIONS\\fR]", command.name(), parameters, required);
        print(".br");
    }

    private static void describe(CommandSpec command) {
        print(".SS quill %s", command.name());
        print("%s", escaped(text(command.usageMessage().description())));
        for (PositionalParamSpec file : command.positionalParameters()) entry("\\fI" + file.paramLabel() + "\\fR", file);
        command.options().forEach(ManPage::option);
        for (String line : command.usageMessage().footer()) print("%s", line.isEmpty() ? ".PP" : escaped(line));
    }

    private static void option(OptionSpec option) {
        String names = String.join(", ", option.names());
        entry("\\fB" + escaped(names) + "\\fR" + (option.arity().max() == 0 ? "" : " \\fI" + option.paramLabel() + "\\fR"), option);
    }

    private static void entry(String tag, ArgSpec described) {
        print(".TP%n%s%n%s", tag, escaped(text(described.description())));
    }

    private static void section(String name) {
        print(".SH %s", name);
    }

    private static String text(String[] lines) {
        return String.join(" ", lines);
    }

    /** Text that troff takes for nothing but text. */
    private static String escaped(String text) {
        String plain = text.replace("\\", "\\e").replace("-", "\\-");
        return plain.startsWith(".") || plain.startsWith("'") ? "\\&" + plain : plain;
    }

    private static void print(String format, Object... arguments) {
        System.out.println(String.format(format, arguments));
    }
}
