#include "tools/counting_index.h"

#include "index/index_format.h"

#include <cstdlib>
#include <fstream>
#include <thread>

namespace test {

namespace {

constexpr std::uint32_t kFinished = 1;
constexpr std::uint32_t kCancelled = 3;
constexpr std::uint32_t kFrameBytes = 417;
constexpr int kCrashStatus = 77;

template <typename Bytes>
void Write(std::ofstream& file, const Bytes& bytes) {
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.flush();
}

} // namespace

void CountingIndex::Build() {
    building_ = true;
    cancelled_ = false;
    std::ofstream file(index_, std::ios::binary | std::ios::trunc);
    trnmpa::MpaIndexHeader header;
    Write(file, trnmpa::FormatIndexHeader(header));
    for (; frames_ < plan_.entries && !cancelled_; ++frames_) {
        Write(file, trnmpa::FormatIndexEntry({(frames_ + 1) * kFrameBytes, kFrameBytes}));
        std::this_thread::sleep_for(plan_.entryDelay);
        if (plan_.crashes)
            std::_Exit(kCrashStatus);
    }
    if (!cancelled_) {
        header.frameCount = frames_;
        header.mediaFileSize = static_cast<std::uint32_t>(
            std::filesystem::file_size(std::filesystem::path(index_).replace_extension()));
        file.seekp(0);
        if (plan_.endState == kFinished)
            Write(file, trnmpa::FormatIndexHeader(header));
        state_ = plan_.endState;
    }
    file.close();
    building_ = false;
}

void CountingIndex::Cancel() {
    cancelled_ = true;
    while (building_)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    // In half of the cases, as it happens in the real module.
    if (frames_ % 2 == 0)
        state_ = kCancelled;
}

} // namespace test
