package com.quill.cli;

import com.quill.inspect.Extraction;
import com.quill.inspect.FileNames;
import com.quill.inspect.HeifReport;
import com.quill.inspect.JsonReport;
import com.quill.inspect.TextReport;
import java.io.IOException;
import java.io.PrintWriter;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.concurrent.Callable;
import picocli.CommandLine.Command;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Option;
import picocli.CommandLine.Parameters;
import picocli.CommandLine.Spec;

/** {@code quill inspect}: what is in HEIF files. */
@Command(name = "inspect", sortOptions = false,
        description = "Shows what is in HEIF files: boxes, items, grid, EXIF, XMP, live-photo sections.",
        footer = {"", "A damaged file is shown as far as it can be read.", "",
            "inspect.md, in share/doc/quill of an installation, lists the names in the JSON document.", "",
            "Exit status: 0 for a sound file, 1 when something in it is damaged or could not be written, "
                + "2 for wrong usage."})
final class InspectCommand implements Callable<Integer> {
    @Spec
    private CommandSpec mSpec;

    @Parameters(paramLabel = "FILE", arity = "1..*", description = "Files to look into.")
    private List<Path> mFiles;

    @Option(names = "--json", description = "Writes a JSON document a file in place of text; complete, nothing summarised.")
    private boolean mJson;

    @Option(names = "--extract", paramLabel = "DIR",
            description = "Writes the EXIF block (exif.bin), its thumbnail (thumbnail.jpg), the XMP packet (xmp.xml) and "
                    + "a live photo's video.mp4, gainmap.bin and extender.bin, as far as there are any, into DIR, "
                    + "which is made when it is missing; of several files into DIR/FILE.")
    private Path mFolder;

    @Option(names = {"-h", "--help"}, usageHelp = true, description = "Shows this help.")
    private boolean mHelp;

    @Override
    public Integer call() {
        int worst = 0;
        for (Path file : mFiles) {
            if (file != mFiles.get(0) && !mJson) mSpec.commandLine().getOut().println();
            worst = Math.max(worst, inspect(file));
        }
        return worst;
    }

    private int inspect(Path file) {
        try {
            FailureText.checkInput(file);
            HeifReport report = HeifReport.read(file);
            write(report);
            List<String> problems = report.problems();
            boolean extracted = mFolder == null || extract(file, report);
            if (problems.isEmpty()) return extracted ? 0 : 1;
            String more = problems.size() == 1 ? "" : "; more under its problems";
            return fail(file, FileNames.printed(problems.get(0)) + more);
        } catch (IOException e) {
            return fail(file, FailureText.of(e));
        } catch (OutOfMemoryError e) {
            return fail(file, "there is not enough memory for what it holds");
        } catch (RuntimeException e) {
            return fail(file, "failed unexpectedly: " + e);
        }
    }

    private int fail(Path file, String why) {
        PrintWriter err = mSpec.commandLine().getErr();
        err.println(FailureText.line("quill: " + file + ": " + why));
        err.flush();
        return 1;
    }

    private void write(HeifReport report) throws IOException {
        PrintWriter out = mSpec.commandLine().getOut();
        if (mJson) {
            JsonReport.write(report, out);
        } else {
            TextReport.write(report, out);
        }
        out.flush();
    }

    private boolean extract(Path file, HeifReport report) {
        // JSON stays the only thing on the standard output.
        Path folder = mFiles.size() == 1 ? mFolder : mFolder.resolve(file.getFileName());
        PrintWriter out = mJson ? mSpec.commandLine().getErr() : mSpec.commandLine().getOut();
        try {
            List<Path> written = Extraction.write(report, folder);
            if (!mJson) out.println();
            for (Path part : written) out.println("wrote " + part + ", " + Files.size(part) + " bytes");
            if (written.isEmpty()) out.println("nothing to extract: there is no EXIF, no XMP and no live photo");
            out.flush();
            return true;
        } catch (IOException e) {
            fail(file, "cannot extract: " + FailureText.of(e));
            return false;
        }
    }
}
