#include "trnlameMp3Decoder/frame_decoder.h"

#include "trnlameMp3Decoder/mpg123_library.h"

#include <algorithm>

namespace mp3 {

namespace {

/// The library's synthesis window turns in 16 steps, and a frame of layer III at a low rate passes 18 of
/// them, any other 36: after so many frames it stands as before. It adds in another order in each place.
constexpr std::int64_t kSynthesisPeriod = 8;

/// main_data_begin has 9 bits, or 8 at low rates.
std::size_t LongestReachBack(const FrameHeader& header) {
    return header.format.lowRate ? 255 : 511;
}

/// Of the decoders in the library the one that every 64-bit PC runs, for the same bits on all of them.
constexpr const char* kDecoder = "x86-64";

void SetUp(const Mpg123Library& library, mpg123_handle* handle) {
    // Whole frames are handed over, so nothing needs to be looked for or looked ahead at.
    constexpr long kFlags = MPG123_QUIET | MPG123_NO_RESYNC | MPG123_NO_READAHEAD | MPG123_IGNORE_INFOFRAME |
                            MPG123_IGNORE_STREAMLENGTH | MPG123_SKIP_ID3V2 | MPG123_NO_PEEK_END;
    library.SetParameter(handle, MPG123_FLAGS, kFlags, 0.0);
    library.SetParameter(handle, MPG123_RVA, MPG123_RVA_OFF, 0.0);
    library.SetParameter(handle, MPG123_INDEX_SIZE, 0, 0.0);
    library.AllowNoFormat(handle);
    const long* rates = nullptr;
    std::size_t count = 0;
    library.Rates(&rates, &count);
    for (const long rate : std::span(rates, count))
        library.AllowFormat(handle, rate, MPG123_MONO | MPG123_STEREO, MPG123_ENC_SIGNED_16);
}

std::size_t MainDataBegin(const FrameHeader& header, std::span<const std::uint8_t> frame) {
    const std::size_t first = frame[header.SideInfoStart()];
    return header.format.lowRate ? first : first << 1 | frame[header.SideInfoStart() + 1] >> 7;
}

/// Takes from a layer III frame what makes sound and leaves its main data to those that follow. The library
/// keeps of the bytes before a frame those that main_data_begin names, and the following frames may need all
/// of them.
void Silence(const FrameHeader& header, std::span<std::uint8_t> frame, std::size_t reservoirBytes) {
    const std::span<std::uint8_t> side = frame.subspan(header.SideInfoStart(), header.SideInfoBytes());
    std::ranges::fill(side, std::uint8_t{0});
    const std::size_t begin = std::min(reservoirBytes, LongestReachBack(header));
    if (header.format.lowRate) {
        side[0] = static_cast<std::uint8_t>(begin);
    } else {
        side[0] = static_cast<std::uint8_t>(begin >> 1);
        side[1] = static_cast<std::uint8_t>((begin & 1) << 7);
    }
}

} // namespace

void FrameDecoder::Delete::operator()(mpg123_handle_struct* handle) const {
    library->Delete(handle);
}

bool FrameDecoder::Open() {
    library_ = Mpg123Library::Load();
    if (library_ == nullptr || !Create())
        return false;
    SetUp(*library_, handle_.get());
    Reset(0);
    return true;
}

bool FrameDecoder::Create() {
    for (const char* decoder : {kDecoder, static_cast<const char*>(nullptr)}) {
        handle_ = {library_->New(decoder, nullptr), Delete{library_.get()}};
        if (handle_ != nullptr)
            return true;
    }
    return false;
}

void FrameDecoder::Reset(std::int64_t frameNumber) {
    nextFrame_ = frameNumber;
    started_ = false;
}

bool FrameDecoder::Decode(const FrameHeader& header, std::span<const std::uint8_t> frame,
                          std::span<std::uint8_t> pcm) {
    if (!IsOpen() || (!started_ && !Start(header, frame, pcm)))
        return false;
    const bool whole = header.format.layer == 3 ? DecodeWithReservoir(header, frame, pcm) : Pass(frame, pcm);
    ++nextFrame_;
    // The library may hold a part of the frame still.
    if (!whole)
        started_ = false;
    return whole;
}

/// Empties the library, then turns its synthesis window to where it stands before this frame in a stream that
/// is decoded from its start: with frames of silence, which leave nothing behind.
bool FrameDecoder::Start(const FrameHeader& header, std::span<const std::uint8_t> frame,
                         std::span<std::uint8_t> pcm) {
    library_->Close(handle_.get());
    if (library_->OpenFeed(handle_.get()) != MPG123_OK)
        return false;
    started_ = true;
    reservoirBytes_ = 0;
    changed_.assign(frame.begin(), frame.end());
    std::fill(changed_.begin() + static_cast<std::ptrdiff_t>(header.SideInfoStart()), changed_.end(),
              std::uint8_t{0});
    const std::int64_t turns = (nextFrame_ % kSynthesisPeriod + kSynthesisPeriod) % kSynthesisPeriod;
    for (std::int64_t i = 0; i < turns; ++i)
        if (!Pass(changed_, pcm))
            return false;
    return true;
}

/// The library leaves its synthesis out where main data is missing, and its window would not turn: such
/// frames are passed as silence.
bool FrameDecoder::DecodeWithReservoir(const FrameHeader& header, std::span<const std::uint8_t> frame,
                                       std::span<std::uint8_t> pcm) {
    const std::size_t reservoir = reservoirBytes_;
    const std::size_t mainData = frame.size() - header.SideInfoStart() - header.SideInfoBytes();
    reservoirBytes_ = std::min(reservoir + mainData, LongestReachBack(header));
    if (MainDataBegin(header, frame) <= reservoir)
        return Pass(frame, pcm);
    changed_.assign(frame.begin(), frame.end());
    Silence(header, changed_, reservoir);
    return Pass(changed_, pcm);
}

bool FrameDecoder::Pass(std::span<const std::uint8_t> frame, std::span<std::uint8_t> pcm) {
    std::size_t done = 0;
    int result = library_->Decode(handle_.get(), frame.data(), frame.size(), pcm.data(), pcm.size(), &done);
    if (result == MPG123_NEW_FORMAT)
        result = library_->Decode(handle_.get(), nullptr, 0, pcm.data(), pcm.size(), &done);
    return (result == MPG123_OK || result == MPG123_NEED_MORE) && done == pcm.size();
}

} // namespace mp3
