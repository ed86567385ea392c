#include "mpa/file_header_sources.h"

#include "fileio/file_reader.h"
#include "fileio/frame_buffer_reader.h"
#include "trcommontoolsr/file_access.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace trnmpa {

std::size_t FrameBufferHeaderSource::ReadOnce(std::span<std::uint8_t> destination) {
    constexpr std::size_t kMost = std::numeric_limits<int>::max();
    return reader_.Read(destination.data(), static_cast<int>(std::min(destination.size(), kMost)));
}

/// One back end of the reader gives all or nothing; at the end of the file the rest is then asked for again.
std::size_t FrameBufferHeaderSource::Read(std::span<std::uint8_t> destination) {
    const std::int64_t position = reader_.GetPosition();
    const std::size_t read = ReadOnce(destination);
    if (read != 0 || destination.empty())
        return read;
    const std::int64_t rest = reader_.GetLength() - position;
    if (rest <= 0 || static_cast<std::uint64_t>(rest) >= destination.size())
        return 0;
    reader_.SetPosition(position);
    return ReadOnce(destination.first(static_cast<std::size_t>(rest)));
}

std::int64_t FrameBufferHeaderSource::Position() {
    return reader_.GetPosition();
}

bool FrameBufferHeaderSource::SetPosition(std::int64_t position) {
    reader_.SetPosition(position);
    return reader_.GetPosition() == position;
}

std::size_t FileAccessHeaderSource::Read(std::span<std::uint8_t> destination) {
    constexpr std::size_t kMost = std::numeric_limits<std::uint32_t>::max();
    return file_.Read(destination.data(), static_cast<std::uint32_t>(std::min(destination.size(), kMost)));
}

std::int64_t FileAccessHeaderSource::Position() {
    return file_.GetPosition();
}

bool FileAccessHeaderSource::SetPosition(std::int64_t position) {
    return file_.SetPosition(position) != 0;
}

std::size_t FileReaderHeaderSource::ReadOnce(std::span<std::uint8_t> destination) {
    constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
    const std::int32_t read =
        file_.Read(destination.data(), static_cast<std::int32_t>(std::min(destination.size(), kMost)));
    return static_cast<std::size_t>(read);
}

std::size_t FileReaderHeaderSource::Read(std::span<std::uint8_t> destination) {
    std::size_t read = ReadOnce(destination);
    // The file may have grown meanwhile; only what is there and does not come is an error.
    while (read < destination.size() && file_.GetPosition() < file_.GetLength()) {
        const std::size_t more = ReadOnce(destination.subspan(read));
        if (more == 0)
            throw std::runtime_error("a read error");
        read += more;
    }
    return read;
}

std::int64_t FileReaderHeaderSource::Position() {
    return file_.GetPosition();
}

bool FileReaderHeaderSource::SetPosition(std::int64_t position) {
    return file_.SetPosition(position) != 0;
}

} // namespace trnmpa
