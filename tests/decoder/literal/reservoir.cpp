#include "decoder/literal/reservoir.h"

#include <algorithm>

namespace test::literal {

void Reservoir::Append(std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) {
        ring_[static_cast<std::size_t>(writeIndex_)] = byte;
        writeIndex_ = (writeIndex_ + 1) & kMask;
    }
}

void Reservoir::RewindToFrameStart(int bytes) {
    bytes = std::clamp(bytes, 0, kBytes);
    readIndex_ = (writeIndex_ + kBytes - bytes) & kMask;
    bytesLeft_ = bytes;
    EmptyAccumulator();
}

void Reservoir::EmptyAccumulator() {
    bitShift_ = kAccumulatorEmpty;
    accumulator_ = 0;
}

void Reservoir::Refill() {
    while (bitShift_ >= 0 && bytesLeft_ > 0) {
        accumulator_ |= static_cast<std::uint32_t>(ring_[static_cast<std::size_t>(readIndex_)]) << bitShift_;
        readIndex_ = (readIndex_ + 1) & kMask;
        bitShift_ -= 8;
        --bytesLeft_;
    }
}

std::uint32_t Reservoir::Peek(int bits) {
    if (bitShift_ > 24 - bits)
        Refill();
    return accumulator_ >> (32 - bits);
}

void Reservoir::Skip(int bits) {
    if (bitShift_ > 24 - bits)
        Refill();
    accumulator_ <<= bits;
    bitShift_ += bits;
}

std::uint32_t Reservoir::Get(int bits) {
    const std::uint32_t value = Peek(bits);
    accumulator_ <<= bits;
    bitShift_ += bits;
    return value;
}

void Reservoir::SeekToBitsRemaining(int target) {
    const int surplus = BitsRemaining() - target;
    if (surplus == 0)
        return;
    if (surplus > 0 && surplus <= 16) {
        Skip(surplus);
        return;
    }
    bytesLeft_ = (target + 7) / 8;
    readIndex_ = (writeIndex_ + kBytes - bytesLeft_) & kMask;
    EmptyAccumulator();
    if (target % 8 != 0)
        Skip(8 - target % 8);
}

} // namespace test::literal
