/// The names under which compilers export members of the module's classes.
#pragma once

namespace mpatool::exported {

#if defined(_MSC_VER)

inline constexpr const char* kSliceReaderMake = "??0TRN_MpAudioFileReader@@QEAA@XZ";
inline constexpr const char* kSliceReaderEnd = "??1TRN_MpAudioFileReader@@UEAA@XZ";
inline constexpr const char* kInitialize = "?Initialize@TRN_MpAudioFileReader@@QEAAHXZ";
inline constexpr const char* kSetPerPcmFrameTime = "?SetPerPCMFrameTime@TRN_MpAudioFileReader@@QEAAH_J@Z";
inline constexpr const char* kSetInputFile = "?SetInputFile@TRN_MpAudioFileReader@@QEAAHVCComBSTR@ATL@@@Z";
inline constexpr const char* kGetOriginalStreamInfo =
    "?GetOriginalStreamInfo@TRN_MpAudioFileReader@@QEAAHAEAUtWAVEFORMATEX@@@Z";
inline constexpr const char* kSetOutputFormat =
    "?SetOutputWAVEFormat@TRN_MpAudioFileReader@@QEAAHAEAUtWAVEFORMATEX@@@Z";
inline constexpr const char* kStartRead = "?StartRead@TRN_MpAudioFileReader@@QEAAHXZ";
inline constexpr const char* kSeekTo = "?SeekTo@TRN_MpAudioFileReader@@QEAAHI@Z";
inline constexpr const char* kReadFrame =
    "?ReadFrame@TRN_MpAudioFileReader@@QEAAHPEAPEAEAEAHPEAUtWAVEFORMATEX@@1@Z";

inline constexpr const char* kSampleReaderMake = "??0TRN_MpAudioFileReader2@@QEAA@XZ";
inline constexpr const char* kSampleReaderEnd = "??1TRN_MpAudioFileReader2@@UEAA@XZ";
inline constexpr const char* kSampleReaderInitialize = "?Initialize@TRN_MpAudioFileReader2@@QEAAHXZ";

#else

// The Itanium C++ ABI. Two types have other names on Windows: a 64-bit integer is no long there, and the
// system's headers name the record that WAVEFORMATEX stands for.
#if defined(_WIN32)
#define MPATOOL_INT64 "x"
#define MPATOOL_WAVEFORMATEX "13tWAVEFORMATEX"
#else
#define MPATOOL_INT64 "l"
#define MPATOOL_WAVEFORMATEX "12WAVEFORMATEX"
#endif
#define MPATOOL_SLICE_READER "_ZN21TRN_MpAudioFileReader"
#define MPATOOL_SAMPLE_READER "_ZN22TRN_MpAudioFileReader2"

inline constexpr const char* kSliceReaderMake = MPATOOL_SLICE_READER "C1Ev";
inline constexpr const char* kSliceReaderEnd = MPATOOL_SLICE_READER "D1Ev";
inline constexpr const char* kInitialize = MPATOOL_SLICE_READER "10InitializeEv";
inline constexpr const char* kSetPerPcmFrameTime = MPATOOL_SLICE_READER "18SetPerPCMFrameTimeE" MPATOOL_INT64;
inline constexpr const char* kSetInputFile = MPATOOL_SLICE_READER "12SetInputFileE8CComBSTR";
inline constexpr const char* kGetOriginalStreamInfo =
    MPATOOL_SLICE_READER "21GetOriginalStreamInfoER" MPATOOL_WAVEFORMATEX;
inline constexpr const char* kSetOutputFormat =
    MPATOOL_SLICE_READER "19SetOutputWAVEFormatER" MPATOOL_WAVEFORMATEX;
inline constexpr const char* kStartRead = MPATOOL_SLICE_READER "9StartReadEv";
inline constexpr const char* kSeekTo = MPATOOL_SLICE_READER "6SeekToEj";
inline constexpr const char* kReadFrame = MPATOOL_SLICE_READER "9ReadFrameEPPhRiP" MPATOOL_WAVEFORMATEX "S2_";

inline constexpr const char* kSampleReaderMake = MPATOOL_SAMPLE_READER "C1Ev";
inline constexpr const char* kSampleReaderEnd = MPATOOL_SAMPLE_READER "D1Ev";
inline constexpr const char* kSampleReaderInitialize = MPATOOL_SAMPLE_READER "10InitializeEv";

#undef MPATOOL_INT64
#undef MPATOOL_WAVEFORMATEX
#undef MPATOOL_SLICE_READER
#undef MPATOOL_SAMPLE_READER

#endif

} // namespace mpatool::exported
