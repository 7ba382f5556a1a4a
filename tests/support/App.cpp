#include "support/App.h"

#include <arpa/inet.h>
#include <string.h>

#include <algorithm>
#include <fstream>
#include <map>

#include "HeifWriterJni.h"

namespace quill::test {

namespace {

using namespace android;
using Bytes = std::vector<uint8_t>;

constexpr int kRows = 96;
/** A box that readers skip. */
const Bytes kHeldBefore = {0, 0, 0, 16, 'f', 'r', 'e', 'e', 'b', 'e', 'f', 'o', 'r', 'e', '.', '.'};
constexpr char kOtherFormat[] = "other";
const Bytes kExif = {'E', 'x', 'i', 'f', 0, 0, 'I', 'I', 42, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0};
constexpr uint8_t kScribble = 0x5A;

/** The types of the boxes from `at` on, those of the still as one. */
std::string boxesOf(const Bytes& file, size_t at) {
    std::string types;
    while (at < file.size()) {
        const size_t left = file.size() - at;
        uint32_t size = 0;
        if (left >= 8) memcpy(&size, &file[at], 4);
        size = ntohl(size);
        if (size < 8 || size > left) return types + ", then cut";
        const std::string type(&file[at] + 4, &file[at] + 8);
        if (type == "ftyp") types += " still";
        if (type != "ftyp" && type != "meta" && type != "mdat") types += " " + type;
        at += size;
    }
    return types;
}

}  // namespace

App::App(const PhotoCase& shown)
        : photo(shown),
          output(kHeldBefore),
          video(Bytes(10000, 'v')),
          gainMap(Bytes(200, 'g')),
          mBitmap(shown.width, kRows, frame().bytes) {
    array.assign(frame().bytes);
    mExif.assign(kExif);
    mExtender.assign(Bytes(60, 'x'));
    outputFd.fd = output.fd();
    mVideoFd.fd = video.fd();
    mGainMapFd.fd = gainMap.fd();
    options.fields = {{"xmpData", FakeVm::asJava(&mXmp)},
                      {"fileExtender", FakeVm::asJava(&mExtender)},
                      {"gainmapFd", FakeVm::asJava(&mGainMapFd)},
                      {"videoFd", FakeVm::asJava(&mVideoFd)}};
    JNI_OnLoad(java.vm(), nullptr);
}

const CameraFrame& App::frame() const {
    static std::map<std::pair<int, int>, CameraFrame> frames;
    CameraFrame& frame = frames[{photo.format, photo.width}];
    if (frame.bytes.empty()) frame = makeFrame(photo.format, {photo.width, kRows, photo.width, kRows});
    return frame;
}

void App::setUp() {
    handle = nativeSetup(java.env(), self());
    if (isSetUp()) create();
}

void App::create() {
    const Geometry& g = frame().geometry;
    nativeCreate(java.env(), self(), handle, g.width, g.height, g.stride, g.sliceHeight, photo.format, 90, 90);
}

long App::write() {
    const jbyteArray pixels = FakeVm::asJava(&array), block = FakeVm::asJava(&mExif);
    const jobject fd = FakeVm::asJava(&outputFd), asked = FakeVm::asJava(&options);
    JNIEnv* const env = java.env();
    const jlong result =
            photo.bitmap ? nativeCreateLivePhotoByBmp(env, self(), handle, FakeVm::asJava(&mBitmap), block, fd, asked)
            : photo.live ? nativeCreateLivePhoto(env, self(), handle, pixels, block, fd, asked)
                         : nativeProcessHeicPhotoFrame(env, self(), handle, pixels, block, fd);
    java.exceptionPending = false;  // it has reached the app
    return result;
}

void App::destroy() { nativeDestory(java.env(), self(), handle); }

void App::scribble(bool file) {
    for (FakeVm::Array* const own : {&array, &mExif, &mExtender, &mBitmap.pixels}) own->fill(kScribble);
    if (!file) return;
    mScribbledFile = true;
    std::ofstream(output.path()) << kOtherFormat;
}

std::string App::touched() {
    std::string found;
    for (FakeVm::Array* const own : {&array, &mExif, &mExtender, &mBitmap.pixels}) {
        if (own->bytes() != Bytes(own->size(), kScribble)) found += " an array of " + std::to_string(own->size());
    }
    const Bytes file = output.bytes();
    const bool touched = mScribbledFile && std::string(file.begin(), file.end()) != kOtherFormat;
    return touched ? found + " the file" : found;
}

std::string App::fileText() const {
    const Bytes file = output.bytes();
    if (file == kHeldBefore) return " as it was";
    const bool kept =
            std::mismatch(kHeldBefore.begin(), kHeldBefore.end(), file.begin(), file.end()).first == kHeldBefore.end();
    return kept ? boxesOf(file, kHeldBefore.size()) : " DAMAGED";
}

bool App::holdsNothing() const {
    return array.pins() + mExif.pins() + mExtender.pins() + mBitmap.pixels.pins() + java.texts == 0;
}

}  // namespace quill::test
