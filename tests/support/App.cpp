#include "support/App.h"

#include <unistd.h>

#include <algorithm>
#include <map>

#include "HeifWriterJni.h"

namespace quill::test {

namespace {

using namespace android;
using Bytes = std::vector<uint8_t>;

constexpr int kRows = 96;
/** A box that readers skip. */
const Bytes kHeldBefore = {0, 0, 0, 16, 'f', 'r', 'e', 'e', 'b', 'e', 'f', 'o', 'r', 'e', '.', '.'};
const Bytes kOtherFormat = {'o', 't', 'h', 'e', 'r'};
const Bytes kExif = {'E', 'x', 'i', 'f', 0, 0, 'I', 'I', 42, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0};
constexpr size_t kVideoBytes = 10000, kGainMapBytes = 200, kExtenderBytes = 60;
constexpr uint8_t kScribble = 0x5A;

uint32_t word(const Bytes& bytes, size_t at) {
    return uint32_t{bytes[at]} << 24 | uint32_t{bytes[at + 1]} << 16 | uint32_t{bytes[at + 2]} << 8 | bytes[at + 3];
}

/** The types of the boxes from `at` on, those of the still as one. */
std::string boxesOf(const Bytes& file, size_t at) {
    std::string types;
    while (at < file.size()) {
        const size_t left = file.size() - at;
        const size_t size = left < 8 ? 0 : word(file, at);
        if (size < 8 || size > left) return types + ", then cut";
        const std::string type(&file[at] + 4, &file[at] + 8);
        if (type == "ftyp") types += " still";
        if (type != "ftyp" && type != "meta" && type != "mdat") types += " " + type;
        at += size;
    }
    return types;
}

void fill(const TemporaryFile& file, const Bytes& bytes) {
    if (write(file.fd(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) _exit(1);
}

/** Made once a process, format and size. */
const CameraFrame& frameOf(const PhotoCase& photo) {
    static std::map<std::pair<int, int>, CameraFrame> frames;
    CameraFrame& frame = frames[{photo.format, photo.width}];
    if (frame.bytes.empty()) frame = makeFrame(photo.format, {photo.width, kRows, photo.width, kRows});
    return frame;
}

bool isAll(const FakeVm::Array& array, uint8_t value) {
    const Bytes bytes = array.bytes();
    return std::all_of(bytes.begin(), bytes.end(), [value](uint8_t byte) { return byte == value; });
}

}  // namespace

App::App(const PhotoCase& shown) : photo(shown), mBitmap(shown.width, kRows, frame().bytes) {
    fill(output, kHeldBefore);
    fill(video, Bytes(kVideoBytes, 'v'));
    fill(gainMap, Bytes(kGainMapBytes, 'g'));
    array.assign(frame().bytes);
    mExif.assign(kExif);
    mExtender.assign(Bytes(kExtenderBytes, 'x'));
    outputFd.fd = output.fd();
    mVideoFd.fd = video.fd();
    mGainMapFd.fd = gainMap.fd();
    options.fields = {{"xmpData", FakeVm::asJava(&mXmp)},
                      {"fileExtender", FakeVm::asJava(&mExtender)},
                      {"gainmapFd", FakeVm::asJava(&mGainMapFd)},
                      {"videoFd", FakeVm::asJava(&mVideoFd)}};
    JNI_OnLoad(java.vm(), nullptr);
}

const CameraFrame& App::frame() const { return frameOf(photo); }

void App::setUp() {
    mHandle = nativeSetup(java.env(), self());
    if (isSetUp()) create();
}

void App::create() {
    const Geometry& g = frame().geometry;
    nativeCreate(java.env(), self(), mHandle, g.width, g.height, g.stride, g.sliceHeight, photo.format, 90, 90);
}

long App::write() {
    const jbyteArray pixels = FakeVm::asJava(&array);
    const jbyteArray block = FakeVm::asJava(&mExif);
    const jobject fd = FakeVm::asJava(&outputFd);
    const jobject asked = FakeVm::asJava(&options);
    JNIEnv* const env = java.env();
    const jlong result =
            photo.bitmap ? nativeCreateLivePhotoByBmp(env, self(), mHandle, FakeVm::asJava(&mBitmap), block, fd, asked)
            : photo.live ? nativeCreateLivePhoto(env, self(), mHandle, pixels, block, fd, asked)
                         : nativeProcessHeicPhotoFrame(env, self(), mHandle, pixels, block, fd);
    java.exceptionPending = false;  // it has reached the app
    return result;
}

void App::destroy() { nativeDestory(java.env(), self(), mHandle); }

void App::scribble(bool file) {
    for (FakeVm::Array* const own : {&array, &mExif, &mExtender, &mBitmap.pixels}) own->fill(kScribble);
    if (!file) return;
    mScribbledFile = true;
    if (ftruncate(output.fd(), 0) != 0 || lseek(output.fd(), 0, SEEK_SET) != 0) _exit(1);
    fill(output, kOtherFormat);
}

std::string App::touched() const {
    std::string found;
    for (const FakeVm::Array* const own : {&array, &mExif, &mExtender, &mBitmap.pixels}) {
        if (!isAll(*own, kScribble)) found += " an array of " + std::to_string(own->size());
    }
    if (mScribbledFile && output.bytes() != kOtherFormat) found += " the file";
    return found;
}

std::string App::fileText() const {
    const Bytes file = output.bytes();
    if (file == kHeldBefore) return " as it was";
    const bool kept =
            file.size() >= kHeldBefore.size() && std::equal(kHeldBefore.begin(), kHeldBefore.end(), file.begin());
    return kept ? boxesOf(file, kHeldBefore.size()) : " DAMAGED";
}

bool App::holdsNothing() const {
    return array.pins() + mExif.pins() + mExtender.pins() + mBitmap.pixels.pins() + java.texts == 0;
}

}  // namespace quill::test
