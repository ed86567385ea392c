#include "mpatool/index/index_verify.h"

#include "fileio/file_reader.h"
#include "index/builder/frame_scan.h"
#include "mpatool/index/index_end.h"
#include "mpatool/index/index_file.h"
#include "mpatool/output/count_text.h"
#include "mpatool/output/tool_error.h"
#include "os/console.h"

namespace mpatool {

namespace {

using trnmpa::MpaIndexEntry;
using trnmpa::MpaIndexHeader;

/// "NAME is A in the index, B in the file"; empty when they are equal.
std::string Difference(const std::string& name, std::int64_t inIndex, std::int64_t inFile) {
    if (inIndex == inFile)
        return {};
    return name + " is " + FormatCount(inIndex) + " in the index, " + FormatCount(inFile) + " in the file";
}

/// The first field of the two formats that differs.
std::string FormatDifference(const MpaIndexHeader& index, const MpaIndexHeader& file) {
    const struct {
        const char* name;
        std::int64_t inIndex;
        std::int64_t inFile;
    } fields[] = {
        {"the layer", index.layer, file.layer},
        {"the version class", index.version, file.version},
        {"the number of channels", index.channels, file.channels},
        {"the bit rate", index.bitRate, file.bitRate},
        {"the sample rate", index.sampleRate, file.sampleRate},
        {"the sample size", index.bitsPerSample, file.bitsPerSample},
        {"the first frame's length", index.frameBytes, file.frameBytes},
        {"the number of samples in a frame", index.samplesPerFrame, file.samplesPerFrame},
    };
    for (const auto& field : fields) {
        const std::string difference = Difference(field.name, field.inIndex, field.inFile);
        if (!difference.empty())
            return difference;
    }
    return {};
}

/// What the index says by itself and about the file as a whole.
std::string WholeDifference(const IndexFile& index, std::int64_t mediaBytes) {
    const MpaIndexHeader& header = index.Header();
    if (header == MpaIndexHeader())
        return "it was never finished";
    const auto bytes =
        static_cast<std::int64_t>(trnmpa::kIndexHeaderBytes + header.frameCount * trnmpa::kIndexEntryBytes);
    if (index.Bytes() != bytes)
        return "it has " + CountOf(index.Bytes(), "byte") + ", by its header it would have " +
               FormatCount(bytes);
    return Difference("the file's size", header.mediaFileSize, mediaBytes);
}

std::string EntryDifference(std::int64_t number, const MpaIndexEntry& inIndex, const MpaIndexEntry& inFile) {
    const std::string name = "entry " + FormatCount(number) + ": the frame's ";
    const std::string difference = Difference(name + "position", inIndex.frameOffset, inFile.frameOffset);
    return !difference.empty() ? difference
                               : Difference(name + "length", inIndex.frameBytes, inFile.frameBytes);
}

/// Entry by entry; counts those that are right in `frames`.
template <typename Progress>
std::string EntriesDifference(IndexFile& index, trnmpa::FrameScan& scan, std::int64_t& frames,
                              Progress progress) {
    for (;; ++frames) {
        if (os::InterruptRequested())
            throw Interrupted();
        const auto inIndex = index.Next();
        const auto inFile = scan.Next();
        if (!inIndex && !inFile)
            return {};
        if (!inFile)
            return "it lists " + CountOf(index.Header().frameCount, "frame") + ", the file has " +
                   FormatCount(frames) + " behind the first";
        if (!inIndex)
            return "it lists " + CountOf(frames, "frame") + ", the file has more";
        const std::string difference = EntryDifference(frames, *inIndex, *inFile);
        if (!difference.empty())
            return difference;
        progress(std::int64_t{inFile->frameOffset} + inFile->frameBytes, frames + 1);
    }
}

} // namespace

IndexVerdict VerifyIndex(const std::wstring& file,
                         const std::function<void(std::int64_t bytes, std::int64_t entries)>& progress) {
    RequireReadable(file);
    auto index = IndexFile::Beside(file);
    if (!index)
        return {IndexVerdict::Kind::kMissing, 0, {}};
    trnmpa::CFileReader media;
    if (media.Open(file) != 1)
        throw ToolError(file, "cannot be opened");

    IndexVerdict verdict;
    verdict.difference = WholeDifference(*index, media.GetLength());
    trnmpa::FrameScan scan(media);
    MpaIndexHeader format;
    if (verdict.difference.empty() && !scan.Start(format))
        verdict.difference = "the file has no MPEG audio frames where an index starts";
    if (verdict.difference.empty())
        verdict.difference = FormatDifference(index->Header(), format);
    if (verdict.difference.empty())
        verdict.difference = EntriesDifference(*index, scan, verdict.frames, progress);
    if (verdict.difference.empty())
        RequireReadableBehind(file, scan.Position(), media.GetLength());
    if (!verdict.difference.empty())
        verdict.kind = IndexVerdict::Kind::kStale;
    return verdict;
}

} // namespace mpatool
