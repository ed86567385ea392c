#include "decoder/bitstream.h"

#include <algorithm>

namespace trnmpa {

void AMPBitstream::Clear() {
    buffer_.fill(0);
    bytesLeft_ = 0;
    readIndex_ = 0;
    writeIndex_ = 0;
    linearBit_ = 0;
    EmptyAccumulator();
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

void AMPBitstream::FillLinear(int count) {
    count = std::clamp(count, 0, kLinearBytes);
    bytesLeft_ = 0;
    ReadSource(buffer_.data(), count);
    bytesLeft_ = count;
    writeIndex_ = count;
    linearBit_ = 0;
}

std::uint32_t AMPBitstream::GetLinear(int bits) {
    std::uint64_t window = 0;
    const int firstByte = linearBit_ / 8;
    for (int i = firstByte; i < firstByte + 5; ++i)
        window = window << 8 | (i < bytesLeft_ ? buffer_[static_cast<std::size_t>(i)] : 0u);
    const int spare = 40 - linearBit_ % 8 - bits;
    linearBit_ += bits;
    return static_cast<std::uint32_t>(window >> spare & ((std::uint64_t{1} << bits) - 1));
}

void AMPBitstream::AppendToReservoir(int count) {
    count = std::clamp(count, 0, kReservoirBytes);
    writeIndex_ &= kReservoirMask;
    const int untilEnd = std::min(count, kReservoirBytes - writeIndex_);
    ReadSource(buffer_.data() + writeIndex_, untilEnd);
    ReadSource(buffer_.data(), count - untilEnd);
    writeIndex_ = (writeIndex_ + count) & kReservoirMask;
    bytesLeft_ = std::min(bytesLeft_ + count, kReservoirBytes);
}

void AMPBitstream::RewindToFrameStart(int bytes) {
    bytes = std::clamp(bytes, 0, kReservoirBytes);
    readIndex_ = (writeIndex_ + kReservoirBytes - bytes) & kReservoirMask;
    bytesLeft_ = bytes;
    EmptyAccumulator();
}

void AMPBitstream::SeekToBitsRemaining(int target) {
    const int surplus = BitsRemaining() - target;
    if (surplus == 0)
        return;
    if (surplus > 0 && surplus <= 16) {
        Skip(surplus);
        return;
    }
    bytesLeft_ = (target + 7) / 8;
    readIndex_ = (writeIndex_ + kReservoirBytes - bytesLeft_) & kReservoirMask;
    EmptyAccumulator();
    if (target % 8 != 0)
        Skip(8 - target % 8);
}

} // namespace trnmpa
