#include "mpatool/info/encoder_frame.h"

#include "mpa/frame_walk.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace mpatool {

namespace {

constexpr std::size_t kNameBytes = 4;

/// Big-endian fields one after the other. Behind the frame's end, which may come anywhere, all are missing.
class Fields {
public:
    explicit Fields(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    std::optional<std::int64_t> Number(std::size_t bytes) {
        std::int64_t value = 0;
        for (const std::uint8_t byte : Bytes(bytes))
            value = value << 8 | byte;
        return isShort_ ? std::nullopt : std::optional(value);
    }

    std::string_view Text(std::size_t bytes) {
        const auto text = Bytes(bytes);
        return {reinterpret_cast<const char*>(text.data()), text.size()};
    }

    /// False when they are not there.
    bool Skip(std::size_t bytes) {
        Bytes(bytes);
        return !isShort_;
    }

private:
    std::span<const std::uint8_t> Bytes(std::size_t bytes) {
        isShort_ = isShort_ || bytes > rest_.size();
        if (isShort_)
            return {};
        const auto taken = rest_.first(bytes);
        rest_ = rest_.subspan(bytes);
        return taken;
    }

    std::span<const std::uint8_t> rest_;
    bool isShort_ = false;
};

/// The printable characters that `text` begins with, without blanks at their end.
std::string Printable(std::string_view text) {
    const auto end =
        std::ranges::find_if(text, [](char character) { return character < 0x20 || character > 0x7E; });
    std::string printable(text.begin(), end);
    printable.erase(printable.find_last_not_of(' ') + 1);
    return printable;
}

/// What LAME and others that write its fields add: the encoder's name and how much silence it added.
void ReadLameFields(Fields fields, EncoderFrame& frame) {
    constexpr std::size_t kEncoderBytes = 9;
    constexpr std::size_t kBytesBeforeDelays = 12;
    frame.encoder = Printable(fields.Text(kEncoderBytes));
    fields.Skip(kBytesBeforeDelays);
    const auto delays = fields.Number(3);
    if (frame.encoder.empty() || !delays)
        return;
    frame.delay = *delays >> 12;
    frame.padding = *delays & 0xFFF;
}

/// "Info" and "Xing": flags tell which fields there are.
void ReadXing(Fields fields, EncoderFrame& frame) {
    constexpr std::size_t kTableBytes = 100;
    const std::int64_t flags = fields.Number(4).value_or(0);
    if ((flags & 1) != 0)
        frame.frames = fields.Number(4);
    if ((flags & 2) != 0)
        frame.bytes = fields.Number(4);
    if ((flags & 4) != 0)
        frame.hasTableOfContents = fields.Skip(kTableBytes);
    if ((flags & 8) != 0)
        frame.quality = fields.Number(4);
    ReadLameFields(fields, frame);
}

/// All fields are always there; the table stands behind its four descriptions.
void ReadVbri(Fields fields, EncoderFrame& frame) {
    constexpr std::size_t kVersionBytes = 2;
    fields.Skip(kVersionBytes);
    frame.delay = fields.Number(2);
    frame.quality = fields.Number(2);
    frame.bytes = fields.Number(4);
    frame.frames = fields.Number(4);
    frame.hasTableOfContents = fields.Number(2).value_or(0) > 0;
}

} // namespace

std::optional<std::int64_t> EncoderFrame::SoundSamples(std::int32_t samplesPerFrame) const {
    if (!frames || !delay || !padding)
        return std::nullopt;
    return std::max<std::int64_t>(*frames * samplesPerFrame - *delay - *padding, 0);
}

std::optional<EncoderFrame> ReadEncoderFrame(trnmpa::SourceWindow& window,
                                             const trnmpa::MpaFrameHeader& frame) {
    // At this place whatever the side information's size.
    constexpr std::size_t kVbriPlace = 36;
    if (frame.layer != 3)
        return std::nullopt;
    const auto bytes =
        window.At(frame.firstFrameOffset, static_cast<std::size_t>(trnmpa::DecoderFrameBytes(frame)));
    const auto fieldsAt = [bytes](std::size_t place) {
        return Fields(bytes.subspan(std::min(place, bytes.size())));
    };
    EncoderFrame result;
    result.offset = frame.firstFrameOffset;
    Fields fields =
        fieldsAt(trnmpa::kFrameHeaderBytes + static_cast<std::size_t>(trnmpa::SideInformationBytes(frame)));
    result.name = fields.Text(kNameBytes);
    if (result.name == "Info" || result.name == "Xing") {
        ReadXing(fields, result);
        return result;
    }
    fields = fieldsAt(kVbriPlace);
    result.name = fields.Text(kNameBytes);
    if (result.name != "VBRI")
        return std::nullopt;
    ReadVbri(fields, result);
    return result;
}

} // namespace mpatool
