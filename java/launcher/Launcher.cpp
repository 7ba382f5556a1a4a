// The program `quill`: starts the command line in a JVM of its own process.
//
// A file name is bytes, and the arguments of a process are. Java makes text of them by the locale's charset and loses
// what that charset does not know: everything beyond ASCII where no locale is set. Here the JVM is told that the
// charset is ISO-8859-1, in which every byte is a character, so that each name comes back from Java as it went in.
#include <dlfcn.h>
#include <jni.h>
#include <langinfo.h>
#include <locale.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

extern "C" __attribute__((visibility("default"))) char* nl_langinfo(nl_item item) {
    static char latin1[] = "ISO-8859-1";
    static const locale_t c = newlocale(LC_ALL_MASK, "C", nullptr);
    return item == CODESET ? latin1 : nl_langinfo_l(item, c);
}

namespace {

namespace fs = std::filesystem;

using CreateVm = jint (*)(JavaVM**, void**, void*);

constexpr int kFailure = 1;

std::vector<fs::path> javaHomes() {
    std::vector<fs::path> homes;
    if (const char* const home = getenv("JAVA_HOME")) homes.emplace_back(home);
    homes.emplace_back(QUILL_JAVA_HOME);
    const char* const path = getenv("PATH");
    std::istringstream folders(path == nullptr ? "" : path);
    std::error_code missing;
    for (std::string folder; std::getline(folders, folder, ':');) {
        const fs::path java = fs::canonical(fs::path(folder) / "java", missing);
        if (!missing) homes.push_back(java.parent_path().parent_path());
    }
    return homes;
}

/** The JVM's library, empty if there is no JVM. Builds of the JDK for small processors have another than the server's.
 */
fs::path findVm() {
    for (const fs::path& home : javaHomes()) {
        for (const char* const kind : {"server", "client", "zero", "minimal"}) {
            fs::path library = home / "lib" / kind / "libjvm.so";
            if (fs::exists(library)) return library;
        }
    }
    return {};
}

/** Where this program is, the build's tree or an installation's: its own libraries and jars are found from there. */
fs::path ownFolder() { return fs::read_symlink("/proc/self/exe").parent_path(); }

/** The first of these folders beside this program that exists. */
fs::path beside(const char* installed, const char* built) {
    const fs::path folder = (ownFolder() / installed).lexically_normal();
    return fs::is_directory(folder) ? folder : (ownFolder() / built).lexically_normal();
}

/** The archive is this JVM's: an upgrade keeps the times of the files in its package, but not the time of their change.
 */
bool isArchiveOf(const fs::path& vm, const fs::path& classes) {
    struct stat library {
    }, archive{};
    return stat(vm.c_str(), &library) == 0 && stat(classes.c_str(), &archive) == 0 && archive.st_size > 0 &&
           archive.st_mtim.tv_sec >= library.st_ctim.tv_sec;
}

std::vector<std::string> vmOptions(const fs::path& vm) {
    const std::string jars = beside(QUILL_JARS_FROM_PROGRAM, "../java");
    const fs::path libraries = beside(QUILL_LIBRARIES_FROM_PROGRAM, "../lib");
    std::string classPath;
    for (const char* const jar : {"quill", "quill-media", "quill-android"}) classPath += jars + "/" + jar + ".jar:";
    std::vector<std::string> options{
            "-Djava.class.path=" + classPath + QUILL_JARS_OF_OTHERS,
            "-Djava.library.path=" + libraries.string() + ":" QUILL_LIBRARIES_OF_OTHERS,
            "-Djava.awt.headless=true",
            std::string("-Dquill.version=") + QUILL_VERSION,
            // A 64-megapixel photograph needs its pixels twice. The heap is as large as that asks for, and no larger.
            "-XX:MaxRAMPercentage=75",
            "-Xms16m",
            "-XX:MinHeapFreeRatio=10",
            "-XX:MaxHeapFreeRatio=30",
            // What starts soonest. The second compiler has nothing to gain in a run that x265 takes nearly all of.
            "-XX:TieredStopAtLevel=1",
            "-XX:+UseSerialGC",
            "-XX:-UsePerfData",
            "-XX:+UnlockDiagnosticVMOptions",
            "-XX:ArchiveRelocationMode=0",
            // Nothing of the JVM's own on the output: an archive may be of another place.
            "-Xlog:disable",
            "-Xlog:all=error:stderr",
    };
    const fs::path classes = libraries / "quill/classes.jsa";
    if (isArchiveOf(vm, classes)) options.push_back("-XX:SharedArchiveFile=" + classes.string());
    return options;
}

JNIEnv* startVm() {
    const fs::path vm = findVm();
    void* const library = vm.empty() ? nullptr : dlopen(vm.c_str(), RTLD_NOW | RTLD_GLOBAL);
    const auto create = library == nullptr ? nullptr : reinterpret_cast<CreateVm>(dlsym(library, "JNI_CreateJavaVM"));
    if (create == nullptr) {
        fputs("quill: there is no Java 17 (Debian package openjdk-17-jre-headless); JAVA_HOME names another\n", stderr);
        return nullptr;
    }
    std::vector<std::string> texts = vmOptions(vm);
    std::vector<JavaVMOption> options;
    options.reserve(texts.size());
    for (std::string& text : texts) options.push_back({text.data(), nullptr});
    JavaVMInitArgs arguments{JNI_VERSION_1_6, static_cast<jint>(options.size()), options.data(), JNI_FALSE};
    JavaVM* started = nullptr;
    JNIEnv* env = nullptr;
    return create(&started, reinterpret_cast<void**>(&env), &arguments) == JNI_OK ? env : nullptr;
}

jstring textOf(JNIEnv* env, const char* bytes) {
    std::vector<jchar> characters;
    for (; *bytes != '\0'; ++bytes) characters.push_back(static_cast<unsigned char>(*bytes));
    return env->NewString(characters.data(), static_cast<jsize>(characters.size()));
}

/** Returns only when Java's main does not: it ends the process. */
void runMain(int argc, char** argv) {
    JNIEnv* const env = startVm();
    if (env == nullptr) return;
    const jclass program = env->FindClass("com/quill/cli/Quill");
    const jmethodID main =
            program == nullptr ? nullptr : env->GetStaticMethodID(program, "main", "([Ljava/lang/String;)V");
    if (main != nullptr) {
        const jobjectArray arguments = env->NewObjectArray(argc - 1, env->FindClass("java/lang/String"), nullptr);
        for (int i = 1; i < argc; ++i) env->SetObjectArrayElement(arguments, i - 1, textOf(env, argv[i]));
        env->CallStaticVoidMethod(program, main, arguments);
    }
    if (env->ExceptionCheck()) env->ExceptionDescribe();
}

}  // namespace

int main(int argc, char** argv) {
    setenv("LC_ALL", "C", 1);
    const bool verbose =
            std::any_of(argv, argv + argc, [](const char* text) { return strcmp(text, "--verbose") == 0; });
    setenv("QUILL_LOG", verbose ? "verbose" : "silent", 0);
    // Not on the first thread: a JVM cannot guard its stack.
    std::thread(runMain, argc, argv).join();
    return kFailure;
}
