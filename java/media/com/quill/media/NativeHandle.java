package com.quill.media;

import android.util.Log;
import java.lang.ref.PhantomReference;
import java.lang.ref.ReferenceQueue;
import java.util.Collections;
import java.util.HashSet;
import java.util.Set;
import java.util.function.LongConsumer;

/**
 * The native side of one writer, destroyed once: by the writer, or, with a line in the log, when the writer has been
 * collected without. java.lang.ref.Cleaner would do, but came to devices with API level 33.
 */
final class NativeHandle extends PhantomReference<QuillHeifWriter> {
    private static final ReferenceQueue<QuillHeifWriter> kCollected = new ReferenceQueue<>();
    private static final Set<NativeHandle> kOpen = Collections.synchronizedSet(new HashSet<>());

    static {
        Thread thread = new Thread(NativeHandle::destroyCollected, "QuillHeifWriter-Leaks");
        thread.setDaemon(true);
        thread.start();
    }

    private final LongConsumer mDestroy;
    private final Throwable mOpened = new Throwable("The writer was made here");
    private long mHandle;

    /** {@code destroy} must not hold the writer. */
    NativeHandle(QuillHeifWriter writer, long handle, LongConsumer destroy) {
        super(writer, kCollected);
        mHandle = handle;
        mDestroy = destroy;
        kOpen.add(this);
    }

    /** 0 once destroyed. */
    synchronized long value() {
        return mHandle;
    }

    /** Of no effect when that has been done before. */
    synchronized void destroy() {
        if (!kOpen.remove(this)) return;
        clear();
        mDestroy.accept(mHandle);
        mHandle = 0;
    }

    private static void destroyCollected() {
        for (;;) {
            try {
                NativeHandle leaked = (NativeHandle) kCollected.remove();
                Log.w("QuillHeifWriter", "A writer was never closed. Until now it held an encoder and its threads",
                        leaked.mOpened);
                leaked.destroy();
            } catch (InterruptedException e) {
                // Not of ours; there is nothing to end.
            }
        }
    }
}
