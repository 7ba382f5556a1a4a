#include "SpareEngines.h"

#include <unistd.h>

#include <algorithm>
#include <list>
#include <mutex>
#include <thread>

namespace quill::host {

namespace {

struct Spare {
    EngineSettings settings;
    std::unique_ptr<HevcEngine> engine;
};

/** In the order of their last use. */
struct Spares {
    std::mutex lock;
    std::list<Spare> list;
    pid_t process = getpid();
};

Spares& spares() {
    static Spares* kept = new Spares;                  // x265's threads end with the process
    if (kept->process != getpid()) kept = new Spares;  // a fork copies engines without their threads
    return *kept;
}

}  // namespace

std::unique_ptr<HevcEngine> takeSpareEngine(const EngineSettings& settings) {
    Spares& from = spares();
    const std::lock_guard<std::mutex> guard(from.lock);
    const auto found = std::find_if(from.list.begin(), from.list.end(),
                                    [&](const Spare& spare) { return spare.settings == settings; });
    if (found == from.list.end()) return nullptr;
    std::unique_ptr<HevcEngine> engine = std::move(found->engine);
    from.list.erase(found);
    return engine;
}

void keepSpareEngine(const EngineSettings& settings, std::unique_ptr<HevcEngine> engine) {
    std::list<Spare> tooMany;  // closed without the lock
    Spares& to = spares();
    const std::lock_guard<std::mutex> guard(to.lock);
    to.list.push_back({settings, std::move(engine)});
    if (to.list.size() > size_t{2} * std::max(1u, std::thread::hardware_concurrency())) {
        tooMany.splice(tooMany.end(), to.list, to.list.begin());
    }
}

}  // namespace quill::host
