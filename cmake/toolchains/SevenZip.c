/*
 * In place of p7zip's 7z.so where the program is built for another processor than the machine's: Debian's libbacktrace
 * needs that file, of which only the machine's own kind can be installed. It would unpack compressed symbol tables for
 * stack traces, which nothing here prints; should something begin to, it ends here and says so.
 */
#include <stdio.h>
#include <stdlib.h>

static void refuse(const char* function) {
    fprintf(stderr, "%s: no stack traces in cross-built programs\n", function);
    abort();
}

void CrcGenerateTable(void) { refuse(__func__); }
void Crc64GenerateTable(void) { refuse(__func__); }
void XzUnpacker_Construct(void) { refuse(__func__); }
void XzUnpacker_Code(void) { refuse(__func__); }
void XzUnpacker_IsStreamWasFinished(void) { refuse(__func__); }
void XzUnpacker_Free(void) { refuse(__func__); }
