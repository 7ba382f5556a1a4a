// The video appended to a live photo.
#include <fcntl.h>
#include <unistd.h>

#include <memory>
#include <stdexcept>

#include "BoxAppender.h"
#include "Processes.h"
#include "Rows.h"
#include "Subjects.h"
#include "support/TemporaryFiles.h"

namespace quill::bench {

namespace {

/** A video, and both files that it is copied to, in one folder. */
class Copies {
  public:
    explicit Copies(int videoBytes) : mVideo(open("video")), mAppended(open("appended")) {
        const std::string chunk(1 << 16, 'v');
        for (int written = 0; written < videoBytes; written += static_cast<int>(chunk.size())) {
            if (write(mVideo, chunk.data(), chunk.size()) < 0) throw std::runtime_error("cannot write a video");
        }
    }
    ~Copies() {
        close(mVideo);
        close(mAppended);
    }
    Copies(const Copies&) = delete;
    Copies& operator=(const Copies&) = delete;

    void append() {
        if (ftruncate(mAppended, 0) != 0 || lseek(mAppended, 0, SEEK_SET) != 0 ||
            !android::appendFileBox(mAppended, android::kVideoBox, mVideo)) {
            throw std::runtime_error("cannot append the video");
        }
    }

    /** Bytes are copied, not shared, where the file system could share them. */
    void cp() const { run({"cp", "--reflink=never", path("video"), path("copied")}); }

  private:
    std::string path(const std::string& name) const { return mFolder.path() + "/" + name; }
    int open(const std::string& name) const {
        const int fd = ::open(path(name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (fd < 0) throw std::runtime_error("cannot make " + path(name));
        return fd;
    }

    const test::TemporaryFolder mFolder;
    const int mVideo;
    const int mAppended;
};

}  // namespace

void addLivePhoto(const Effort& effort) {
    addPairedRow("live-photo", effort.stills, [bytes = effort.videoBytes] {
        const auto copies = std::make_shared<Copies>(bytes);
        return Sides{[=] { copies->append(); }, [=] { copies->cp(); }};
    });
}

}  // namespace quill::bench
