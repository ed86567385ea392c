#include "decoder/bitstream.h"

#include <algorithm>
#include <cstring>

namespace trnmpa {

void AMPBitstream::Clear() {
    reservoir_.fill(0);
    writeIndex_ = 0;
    StartBody(0);
}

bool AMPBitstream::TryReadSource(void* destination, int count) {
    if (count <= 0)
        return true;
    return source_ != nullptr && source_->Read(destination, count) == static_cast<unsigned int>(count);
}

void AMPBitstream::ReadSource(void* destination, int count) {
    if (!TryReadSource(destination, count))
        throw static_cast<int>(AMP_ERR_END_OF_STREAM);
}

/// Makes the first `count` bytes the body.
void AMPBitstream::StartBody(int count) {
    if (count < dirtyBytes_)
        std::memset(body_.data() + count, 0, static_cast<std::size_t>(dirtyBytes_ - count));
    dirtyBytes_ = count;
    reader_ = BitReader(body_.data(), count);
}

void AMPBitstream::FillLinear(int count) {
    count = std::clamp(count, 0, kLinearBytes);
    dirtyBytes_ = std::max(dirtyBytes_, count); // a read that comes short leaves bytes too
    const bool isWhole = TryReadSource(body_.data(), count);
    StartBody(isWhole ? count : 0);
    if (!isWhole)
        throw static_cast<int>(AMP_ERR_END_OF_STREAM);
}

void AMPBitstream::AppendToReservoir(int count) {
    count = std::clamp(count, 0, kReservoirBytes);
    const int untilEnd = std::min(count, kReservoirBytes - writeIndex_);
    ReadSource(reservoir_.data() + writeIndex_, untilEnd);
    ReadSource(reservoir_.data(), count - untilEnd);
    writeIndex_ = (writeIndex_ + count) & kReservoirMask;
}

void AMPBitstream::RewindToFrameStart(int bytes) {
    bytes = std::clamp(bytes, 0, kReservoirBytes);
    const int first = (writeIndex_ + kReservoirBytes - bytes) & kReservoirMask;
    const int untilEnd = std::min(bytes, kReservoirBytes - first);
    std::memcpy(body_.data(), reservoir_.data() + first, static_cast<std::size_t>(untilEnd));
    std::memcpy(body_.data() + untilEnd, reservoir_.data(), static_cast<std::size_t>(bytes - untilEnd));
    dirtyBytes_ = std::max(dirtyBytes_, bytes);
    StartBody(bytes);
}

} // namespace trnmpa
