#include "mpatool/frames/frame_row.h"

#include "mpatool/command_line/time_parse.h"
#include "mpatool/stream/frame_chain.h"

#include <array>
#include <cstdio>

namespace mpatool {

namespace {

constexpr std::array<const char*, 4> kLayers = {"", "I", "II", "III"};
constexpr std::array<const char*, 4> kModes = {"stereo", "joint stereo", "dual channel", "single channel"};

/// The columns that need a thought, the same in every form.
struct Cells {
    explicit Cells(const FrameRow& row)
        : seconds(static_cast<double>(row.firstSample) / row.frame.header.sampleRate),
          version(VersionOf(row.frame.header)),
          mode(kModes.at(static_cast<std::size_t>(row.frame.header.channelMode))),
          bitRate(row.frame.header.bitRate * 1000), padding(row.frame.header.padding != 0 ? 1 : 0),
          crc(row.frame.isProtected ? 1 : 0) {}

    double seconds;
    const char* version;
    const char* mode;
    std::int32_t bitRate; ///< bit/s
    int padding;
    int crc;

private:
    static const char* VersionOf(const trnmpa::MpaFrameHeader& header) {
        if (header.lsf == 0)
            return "1";
        return IsMpeg25(header) ? "2.5" : "2";
    }
};

template <typename... Values>
void AppendFormatted(std::string& text, const char* format, Values... values) {
    char line[320];
    const int length = std::snprintf(line, sizeof line, format, values...);
    if (length > 0)
        text.append(line, std::min(static_cast<std::size_t>(length), sizeof line - 1));
}

const char* YesNo(int value) {
    return value != 0 ? "yes" : "no";
}

} // namespace

std::string ReadableHeading() {
    return "  frame        byte  bytes        sample          time  MPEG  layer  kbit/s     Hz  "
           "mode            padding  CRC\n";
}

void AppendReadable(std::string& text, const FrameRow& row) {
    const Cells cells(row);
    const trnmpa::MpaFrameHeader& header = row.frame.header;
    AppendFormatted(text, "%7lld  %10lld  %5d  %12lld  %12s  %-4s  %-5s  %6d  %5d  %-14s  %-7s  %s\n",
                    static_cast<long long>(row.number), static_cast<long long>(row.frame.offset),
                    static_cast<int>(row.frame.frameBytes), static_cast<long long>(row.firstSample),
                    FormatTime(cells.seconds).c_str(), cells.version,
                    kLayers.at(static_cast<std::size_t>(header.layer)), static_cast<int>(header.bitRate),
                    static_cast<int>(header.sampleRate), cells.mode, YesNo(cells.padding), YesNo(cells.crc));
}

std::string CsvHeading() {
    return "number,offset,bytes,firstSample,seconds,version,layer,bitRate,sampleRate,mode,padding,crc\n";
}

void AppendCsv(std::string& text, const FrameRow& row) {
    const Cells cells(row);
    AppendFormatted(text, "%lld,%lld,%d,%lld,%.6f,%s,%d,%d,%d,%s,%d,%d\n", static_cast<long long>(row.number),
                    static_cast<long long>(row.frame.offset), static_cast<int>(row.frame.frameBytes),
                    static_cast<long long>(row.firstSample), cells.seconds, cells.version,
                    static_cast<int>(row.frame.header.layer), static_cast<int>(cells.bitRate),
                    static_cast<int>(row.frame.header.sampleRate), cells.mode, cells.padding, cells.crc);
}

void AppendJson(std::string& text, const FrameRow& row) {
    const Cells cells(row);
    AppendFormatted(text,
                    R"({"number": %lld, "offset": %lld, "bytes": %d, "firstSample": %lld, "seconds": %.6f, )"
                    R"("version": "%s", "layer": %d, "bitRate": %d, "sampleRate": %d, "mode": "%s", )"
                    R"("padding": %s, "crc": %s})",
                    static_cast<long long>(row.number), static_cast<long long>(row.frame.offset),
                    static_cast<int>(row.frame.frameBytes), static_cast<long long>(row.firstSample),
                    cells.seconds, cells.version, static_cast<int>(row.frame.header.layer),
                    static_cast<int>(cells.bitRate), static_cast<int>(row.frame.header.sampleRate),
                    cells.mode, cells.padding != 0 ? "true" : "false", cells.crc != 0 ? "true" : "false");
}

} // namespace mpatool
