package android.util;

import java.io.PrintWriter;
import java.io.StringWriter;

/** The system's log. */
public final class Log {
    public static final int WARN = 5;

    static {
        System.loadLibrary("quillplatform");
    }

    private Log() {}

    public static int w(String tag, String msg, Throwable tr) {
        return println(WARN, tag, msg + '\n' + getStackTraceString(tr));
    }

    public static String getStackTraceString(Throwable tr) {
        StringWriter text = new StringWriter();
        tr.printStackTrace(new PrintWriter(text));
        return text.toString();
    }

    public static native int println(int priority, String tag, String msg);
}
