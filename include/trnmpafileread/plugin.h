/// The plug-in boundary of the module: `GetPluginReadModule` and the interfaces that it leads to.
///
/// A host loads the module at run time and drives it like this:
///
///     auto entry = reinterpret_cast<GetPluginReadModuleFunction>(dlsym(library, "GetPluginReadModule"));
///     PLUGIN_FILE_READER_MODULE* module = entry();
///     std::int32_t identifier = 0;
///     PLUGIN_FILE_READER_CLASS* reader = nullptr;
///     if (module->GetClassIdForFile(path, &identifier) == 1 &&
///         module->CreateReaderClass(identifier, &reader) == 1 && reader != nullptr &&
///         reader->OpenFile(path, TRN_OPEN_SAMPLE_READER) == 1) {
///         unsigned char* pcm = nullptr;
///         std::int32_t bytes = 0;
///         // `samples`: as many as the host wants; past the end it gets silence, not a failure.
///         for (std::int64_t start = 0; start < samples; start += 4096)
///             if (reader->ReadSamples(0, start, 4096, &pcm, &bytes) == 1)
///                 consume(pcm, bytes);
///     }
///     delete reader;
///     delete module;
///
/// Results are 32-bit integers, 1 for success and 0 for failure unless stated. Nothing is thrown across this
/// boundary. The order of the virtual operations is binding. Paths are wide strings passed by value (UTF-16
/// on Windows, one code point per unit elsewhere), so host and module must come from compatible compilers.
///
/// Threads: the objects take no locks. Different readers may be used on different threads at the same time;
/// one reader serves one caller at a time.
#pragma once

#include "os/windows_macros.h"
#include "trnmpafileread/export.h"

#include <cstdint>
#include <string>

/// Class identifiers, by MPEG audio layer.
inline constexpr std::int32_t TRN_CLASS_MPEG_AUDIO_LAYER_1 = 2321;
inline constexpr std::int32_t TRN_CLASS_MPEG_AUDIO_LAYER_2 = 2322;
inline constexpr std::int32_t TRN_CLASS_MPEG_AUDIO_LAYER_3 = 2323;

/// Flags of PLUGIN_FILE_READER_CLASS::OpenFile.
inline constexpr std::uint32_t TRN_OPEN_INDEX_BUILDER = 1;
inline constexpr std::uint32_t TRN_OPEN_PROBE = 2;
inline constexpr std::uint32_t TRN_OPEN_SAMPLE_READER = 4;
/// Treated like TRN_OPEN_SAMPLE_READER.
inline constexpr std::uint32_t TRN_OPEN_SAMPLE_READER_ALTERNATE = 8;

/// Result of OpenFile for a variable-bit-rate stream without an index: the probe found frames but does not
/// describe them, and no later phase was run.
inline constexpr std::int32_t TRN_OPEN_VARIABLE_BIT_RATE = 2;

/// Kinds of PLUGIN_FILE_READER_CLASS::GetFileInfo.
inline constexpr std::int32_t TRN_FILE_INFO_PROBE = 1;
inline constexpr std::int32_t TRN_FILE_INFO_SAMPLE_READER = 4;

/// Kind of PLUGIN_FILE_READER_CLASS::GetIndexProgress.
inline constexpr std::int32_t TRN_INDEX_PROGRESS_RECORD = 1;

/// Identity of the module, 132 bytes.
struct PLUGIN_READER_MODULE_INFO {
    char versionTag[4];                 ///< "1000", not terminated
    char name[32];                      ///< "MPA Plugin Reader Module", padded with zeros
    std::uint32_t classIdentifierCount; ///< entries used in `classIdentifiers`: 3
    std::int32_t classIdentifiers[16];  ///< 2321, 2322, 2323, then zeros
    std::uint32_t moduleKind;           ///< 1
    unsigned char reserved[24];         ///< zeros
};
static_assert(sizeof(PLUGIN_READER_MODULE_INFO) == 132);

/// Identity of a reader, 64 bytes.
struct PLUGIN_READER_CLASS_INFO {
    char name[32];                ///< "MPA  Plugin File Reader" (two blanks), padded with zeros
    std::int32_t classIdentifier; ///< 2322 for every reader: one class serves all layers
    std::uint32_t readerKind;     ///< 6
    unsigned char reserved[24];   ///< zeros
};
static_assert(sizeof(PLUGIN_READER_CLASS_INFO) == 64);

/// Progress of the index builder, 40 bytes.
struct PLUGIN_INDEX_PROGRESS {
    /// 0 to 100, or more for a cut last frame. Computed in 32 bits: meaningless, at the end too, for files of
    /// more than 42,949,672 bytes. Go by `state`.
    std::uint32_t percent;
    std::uint32_t framesIndexed; ///< index entries written so far
    std::int64_t reserved[3];    ///< zeros
    /// 0 running or not started, 1 finished, 2 failed, 3 cancelled (TRN_INDEX_*, index_creator.h).
    std::uint32_t state;
    std::uint32_t padding; ///< zero
};
static_assert(sizeof(PLUGIN_INDEX_PROGRESS) == 40);

/// One media file, opened in up to three ways at once. Created by
/// PLUGIN_FILE_READER_MODULE::CreateReaderClass; the host owns it and destroys it with `delete`.
class PLUGIN_FILE_READER_CLASS {
public:
    virtual ~PLUGIN_FILE_READER_CLASS() = default;

    /// Copies the identity record to `record`. 0 for a null pointer.
    virtual std::int32_t GetClassInfo(PLUGIN_READER_CLASS_INFO* record) = 0;

    /// Opens `path` in the ways that `flags` (TRN_OPEN_*) name, in the order probe, sample reader, index
    /// builder; each replaces an earlier one of its kind, the others keep their file. 1 when all succeeded,
    /// also for flags 0; TRN_OPEN_VARIABLE_BIT_RATE if the probe gives that (later phases are then not run);
    /// 0 at the first failure.
    ///
    /// The index builder's open empties or creates the index beside the file and prepares to build it; it
    /// fails for a file without a frame where one is looked for, for a file of 4 GiB or more, or if the index
    /// cannot be written.
    virtual std::int32_t OpenFile(std::wstring path, std::uint32_t flags) = 0;

    /// Builds the index beside the open file, on this thread, and gives 1 whether that finished, failed or
    /// was cancelled: GetIndexProgress says which. 0 without an index builder. Engines that are open use the
    /// new index from their next open on.
    virtual std::int32_t CreateFileIndex() = 0;

    /// Fills `record` with the builder's progress; may be called on another thread while CreateFileIndex
    /// runs. 0 without an index builder, for a null pointer or a `kind` other than
    /// TRN_INDEX_PROGRESS_RECORD.
    virtual std::int32_t GetIndexProgress(std::int32_t kind, PLUGIN_INDEX_PROGRESS* record) = 0;

    /// Called on another thread: stops a running CreateFileIndex and waits for its end. Gives 1; 0 without an
    /// index builder. Call it once for each OpenFile: further calls request the cancellation but do not wait.
    virtual std::int32_t CancelIndexing() = 0;

    /// Describes the file. With TRN_FILE_INFO_PROBE, `record` points to a TRN_MEDIA_INFO2 that is filled from
    /// the probe; with TRN_FILE_INFO_SAMPLE_READER, to a KW_MEDIA_BASE_INFO_ST whose audio format is that of
    /// the PCM that ReadSamples delivers. 1 on success; 0 for another kind, a null record or a missing
    /// engine; after a failed open of the sample reader that engine's negative code. (Both records are
    /// declared in trnmediadet/media_info.h.)
    virtual std::int32_t GetFileInfo(std::int32_t kind, void* record) = 0;

    /// Does nothing; gives 0.
    virtual std::int32_t ClassReserved1() = 0;

    /// Reads `count` samples per channel from sample `start` (both per channel, from the start of the stream)
    /// as signed 16-bit interleaved PCM. `stream` is ignored. On success (1) `*data` points to the PCM and
    /// `*size` is its length in bytes (count x channels x 2); the buffer belongs to the reader and stays
    /// valid until its next ReadSamples, OpenFile or destruction. A request that needs anything past the end
    /// of the stream gives silence of the full length. 0 without an opened sample reader, for a null pointer,
    /// a negative start, a zero count, a request of 2 GiB or more or of more than memory allows, or a decoder
    /// failure.
    virtual std::int32_t ReadSamples(std::uint32_t stream, std::int64_t start, std::uint32_t count,
                                     unsigned char** data, std::int32_t* size) = 0;

    /// Does nothing; gives 0.
    virtual std::int32_t ClassReserved2() = 0;
};

/// The module object that `GetPluginReadModule` hands out; the host owns it and destroys it with `delete`.
class PLUGIN_FILE_READER_MODULE {
public:
    virtual ~PLUGIN_FILE_READER_MODULE() = default;

    /// Copies the identity record to `record`. 0 for a null pointer.
    virtual std::int32_t GetModuleInfo(PLUGIN_READER_MODULE_INFO* record) = 0;

    /// Stores the class identifier for the file name's extension in `*identifier` and gives 1: MP1 (2321),
    /// MP2, M2A, S48 (2322) or MP3 (2323), in any case. Otherwise stores 0 and gives 0. The file is not
    /// opened.
    virtual std::int32_t GetClassIdForFile(std::wstring path, std::int32_t* identifier) = 0;

    /// Does nothing; gives 0.
    virtual std::int32_t ModuleReserved1() = 0;

    /// Creates a reader for one of the three class identifiers and gives 1; the host owns it. When memory
    /// runs out, gives 1 and stores null. 0 for a null pointer or another identifier.
    virtual std::int32_t CreateReaderClass(std::int32_t identifier, PLUGIN_FILE_READER_CLASS** reader) = 0;

    /// Does nothing; gives 1.
    virtual std::int32_t ModuleReserved2() = 0;
};

/// The module's entry, exported under its plain name. Gives a new module object, or null when memory runs
/// out.
extern "C" TRN_EXPORT PLUGIN_FILE_READER_MODULE* GetPluginReadModule();

/// The type of GetPluginReadModule, for hosts that look it up at run time.
using GetPluginReadModuleFunction = PLUGIN_FILE_READER_MODULE* (*)();
