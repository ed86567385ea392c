/// The module for hosts in C and in languages that call C: plain functions and plain types, the same for
/// every compiler. C99 and C++, 64-bit systems.
///
///     trnmpa_reader* reader = NULL;
///     if (trnmpa_reader_open_utf8("song.mp3", &reader) == TRNMPA_OK) {
///         trnmpa_info info = {.struct_size = sizeof info};
///         trnmpa_reader_info(reader, &info);
///         ...
///         trnmpa_reader_close(reader);
///     }
///
/// Nothing is thrown across these functions. A host finds them by name in the loaded module, or links against
/// it. A handle serves one caller at a time; different handles may be used on different threads. Functions
/// that can fail give a trnmpa_result; a null pointer where an object is required gives TRNMPA_ERROR_ARGUMENT
/// and nothing else happens.
///
/// Paths are zero-terminated; `..._utf8` takes bytes, `..._utf16` 16-bit units in the machine's byte order,
/// each on every system.
///
/// Records that may grow begin with `struct_size`, which the caller sets to the size that it was compiled
/// with before each call. A size smaller than here, or above 4096, gives TRNMPA_ERROR_ARGUMENT. If the
/// caller's record is larger, being of a later header, the module fills the fields that it does not know with
/// zeros, and rejects non-zero values there with TRNMPA_ERROR_UNSUPPORTED.
#pragma once

// NOLINTBEGIN(modernize-deprecated-headers,modernize-use-using): C programs include it as well

#include "trnmpafileread/export.h"

#include <stdint.h>

#ifdef __cplusplus
#define TRNMPA_NOEXCEPT noexcept
extern "C" {
#else
#define TRNMPA_NOEXCEPT
#endif

/// The version of this header. It grows when functions are added; none is removed or changes its meaning.
#define TRNMPA_API_VERSION 2u

/// Sets of the built-in decoder's inner loops, as bits of a mask. All give the same PCM, bit for bit.
#define TRNMPA_KERNELS_PLAIN 1u ///< portable code, always there
#define TRNMPA_KERNELS_SSE2 2u  ///< x86-64 processors
#define TRNMPA_KERNELS_AVX2 4u  ///< x86-64 processors with AVX2
#define TRNMPA_KERNELS_ALL 0xFFFFFFFFu

/// TRNMPA_API_VERSION of the header that the module was built with.
TRN_EXPORT uint32_t trnmpa_api_version(void) TRNMPA_NOEXCEPT;

/// The sets that this build has and that processor and operating system can run; TRNMPA_KERNELS_PLAIN always.
TRN_EXPORT uint32_t trnmpa_kernels_available(void) TRNMPA_NOEXCEPT;

/// Narrows the choice to the sets in `mask`, for the whole process; of these the fastest available one is
/// used for each loop. TRNMPA_KERNELS_PLAIN stays included whatever the mask says; TRNMPA_KERNELS_ALL undoes
/// an earlier call. Gives the sets that are now in use. Meant for measurements and tests, and to be called
/// before readers are created; without a call all available sets are in use.
TRN_EXPORT uint32_t trnmpa_use_kernels(uint32_t mask) TRNMPA_NOEXCEPT;

/// One of trnmpa_result_code, or another negative number from a later module.
typedef int32_t trnmpa_result;

/// Results. Failures are negative.
enum trnmpa_result_code {
    TRNMPA_OK = 0,                  ///< done
    TRNMPA_END = 1,                 ///< no slice is left; not a failure
    TRNMPA_ERROR_ARGUMENT = -1,     ///< a null pointer, a wrong struct_size, a number out of its range
    TRNMPA_ERROR_PATH = -2,         ///< an empty path, invalid text, or more than 32767 units
    TRNMPA_ERROR_MEMORY = -3,       ///< memory ran out
    TRNMPA_ERROR_FILE = -4,         ///< the media file cannot be opened
    TRNMPA_ERROR_INDEX = -5,        ///< there is an index beside it, but it cannot be opened
    TRNMPA_ERROR_FORMAT = -6,       ///< the file holds no stream that the module reads
    TRNMPA_ERROR_DECODER = -7,      ///< the decoder that the settings file asks for is missing
    TRNMPA_ERROR_DECODE = -8,       ///< a part of the stream could not be decoded
    TRNMPA_ERROR_BUFFER = -9,       ///< the caller's buffer is too small
    TRNMPA_ERROR_UNSUPPORTED = -10, ///< slices of this duration or format are not supported
    TRNMPA_ERROR_TOO_LARGE = -11,   ///< the media file has 4 GiB or more, which an index cannot describe
    TRNMPA_ERROR_INDEX_WRITE = -12, ///< the index cannot be written or put in its place
    TRNMPA_ERROR_CANCELLED = -13,   ///< the progress function asked for it
    TRNMPA_ERROR_UNEXPECTED = -14   ///< anything else: memory during a read, or an index of another file
};

/// What a result means, as one short English sentence in UTF-8 without a full stop. Static; never null, not
/// even for numbers that are not results.
TRN_EXPORT const char* trnmpa_error_text(trnmpa_result result) TRNMPA_NOEXCEPT;

/// A file that is open for reading samples; created by trnmpa_reader_open_*, freed by trnmpa_reader_close.
typedef struct trnmpa_reader trnmpa_reader;

/// Opens the media file `path` and the index beside it ("song.mp3.idx"), if there is one. `*reader` gets the
/// handle, null on failure. The settings file chooses the decoder.
TRN_EXPORT trnmpa_result trnmpa_reader_open_utf8(const char* path, trnmpa_reader** reader) TRNMPA_NOEXCEPT;
/// The same with a path in UTF-16.
TRN_EXPORT trnmpa_result trnmpa_reader_open_utf16(const uint16_t* path,
                                                  trnmpa_reader** reader) TRNMPA_NOEXCEPT;

/// How certain trnmpa_info is about the bit rate.
enum trnmpa_bit_rate_kind {
    TRNMPA_BIT_RATE_UNKNOWN = 0,  ///< the file's analysis could not tell
    TRNMPA_BIT_RATE_CONSTANT = 1, ///< by some headers of the file, or the frame lengths in its index
    TRNMPA_BIT_RATE_VARIABLE = 2  ///< likewise, or by a "Xing" or "VBRI" frame
};

/// How certain trnmpa_info is about the length.
enum trnmpa_length_kind {
    TRNMPA_LENGTH_UNKNOWN = 0,  ///< variable bit rate without an index; reading to the end shows it
    TRNMPA_LENGTH_ESTIMATE = 1, ///< from the places of first and last frame; right to about a frame
    TRNMPA_LENGTH_INDEX = 2     ///< the frames in the index: exact where index and stream belong together
};

/// What is known of an open file. Samples are counted per channel.
typedef struct trnmpa_info {
    uint32_t struct_size;     ///< set by the caller
    uint32_t layer;           ///< 2 or 3
    uint32_t mpeg_version;    ///< 1, or 2 for MPEG-2 and (below 16000 Hz) MPEG 2.5
    uint32_t sample_rate;     ///< Hz
    uint32_t channels;        ///< 1 or 2; 0 with an index that was never finished
    uint32_t bits_per_sample; ///< 16; what the index says, if there is one
    uint32_t block_bytes;     ///< of one sample of all channels
    uint32_t bit_rate;        ///< of the first frame, bit/s
    uint32_t bit_rate_kind;   ///< one of trnmpa_bit_rate_kind
    uint32_t has_index;       ///< 1 when positions are found by an index, else 0
    uint32_t delay;           ///< samples of decoder delay, left out before sample 0
    uint32_t length_kind;     ///< one of trnmpa_length_kind
    int64_t length;           ///< samples; -1 when unknown
    int64_t duration;         ///< the same in units of 100 ns; -1 when unknown
} trnmpa_info;

/// Describes the file as it was when it was opened.
TRN_EXPORT trnmpa_result trnmpa_reader_info(const trnmpa_reader* reader, trnmpa_info* info) TRNMPA_NOEXCEPT;

/// What a read found.
typedef struct trnmpa_read_result {
    uint32_t struct_size; ///< set by the caller
    uint32_t at_end;      ///< 1 when the stream ended before the last sample wanted, else 0
    uint64_t samples;     ///< from the stream, at the start of the buffer; the rest is silence
    int64_t end;          ///< with at_end, the first position past the stream; -1 if this read cannot tell
} trnmpa_read_result;

/// Reads `count` samples (per channel, at least 1) from position `start` (0 or more) to `buffer`, which has
/// room for `buffer_bytes`, at least `count` times block_bytes of trnmpa_info. Samples are signed, 16 bits,
/// little-endian, the channels interleaved. docs/positions.md says which positions are exact.
///
/// If the stream ends first, the rest of the buffer is silence, and the result is TRNMPA_OK all the same;
/// `result`, which may be null, says how much came. (The module's C++ interfaces give nothing but silence for
/// a request that needs anything past the end.) `end` is known when the read began in the stream, at its
/// start, or where the read before ended. With the external decoder the end is where it gives no more.
///
/// After a failure the content of the buffer is meaningless.
TRN_EXPORT trnmpa_result trnmpa_reader_read(trnmpa_reader* reader, int64_t start, uint32_t count,
                                            void* buffer, uint64_t buffer_bytes,
                                            trnmpa_read_result* result) TRNMPA_NOEXCEPT;

/// Closes the file and frees the handle; null is allowed.
TRN_EXPORT void trnmpa_reader_close(trnmpa_reader* reader) TRNMPA_NOEXCEPT;

/// A file that is open for reading slices of fixed duration; created by trnmpa_slices_open_*, freed by
/// trnmpa_slices_close. docs/slices.md says what a slice contains.
typedef struct trnmpa_slices trnmpa_slices;

/// Which slices are wanted. Zero in any field but the first has the meaning that its comment gives.
typedef struct trnmpa_slice_options {
    uint32_t struct_size;     ///< set by the caller
    uint32_t sample_rate;     ///< Hz; 0: the stream's. Between 1/256 and 256 times the stream's
    int64_t slice_time;       ///< units of 100 ns; 0: 400000 (40 ms)
    uint32_t channels;        ///< 1 or 2; 0: the stream's
    uint32_t bits_per_sample; ///< 8 (unsigned), 16, 24 or 32; 0: the stream's, 16
} trnmpa_slice_options;

/// Opens the media file `path` for slices as `options` describes them; null stands for zeros. The first slice
/// is number 0. The built-in decoder is used, whatever the settings file says.
TRN_EXPORT trnmpa_result trnmpa_slices_open_utf8(const char* path, const trnmpa_slice_options* options,
                                                 trnmpa_slices** slices) TRNMPA_NOEXCEPT;
/// The same with a path in UTF-16.
TRN_EXPORT trnmpa_result trnmpa_slices_open_utf16(const uint16_t* path, const trnmpa_slice_options* options,
                                                  trnmpa_slices** slices) TRNMPA_NOEXCEPT;

/// Sets the slice that is read next. Nothing is read here, and every number is accepted.
TRN_EXPORT trnmpa_result trnmpa_slices_seek(trnmpa_slices* slices, uint32_t number) TRNMPA_NOEXCEPT;

/// One slice.
typedef struct trnmpa_slice {
    uint32_t struct_size;     ///< set by the caller
    uint32_t at_end;          ///< 1 with TRNMPA_END, else 0
    const void* data;         ///< little-endian PCM, the handle's, valid until its next call; null if empty
    uint32_t bytes;           ///< of data
    uint32_t sample_rate;     ///< Hz
    uint32_t channels;        ///< interleaved in data
    uint32_t bits_per_sample; ///< of one sample of one channel
} trnmpa_slice;

/// Reads the next slice. TRNMPA_END, with at_end 1, if the stream does not fill another one: what is left
/// (less than a slice) is not delivered. TRNMPA_ERROR_DECODE if it could not be decoded. Whatever the result,
/// the next call reads the slice after this one. If the decoder fails on the way to a slice after a jump, or
/// a slice is shorter than a sample, the result may be TRNMPA_OK without bytes.
TRN_EXPORT trnmpa_result trnmpa_slices_next(trnmpa_slices* slices, trnmpa_slice* slice) TRNMPA_NOEXCEPT;

/// Closes the file and frees the handle; null is allowed.
TRN_EXPORT void trnmpa_slices_close(trnmpa_slices* slices) TRNMPA_NOEXCEPT;

/// How far the building of an index has come.
typedef struct trnmpa_index_progress {
    uint32_t struct_size; ///< set by the module for its progress function, by the caller for `result`
    uint32_t frames;      ///< listed so far; the first frame of a file is not listed
    uint64_t bytes_done;  ///< of the media file
    uint64_t bytes_total; ///< length of the media file
} trnmpa_index_progress;

/// Called while an index is built, on the thread that builds it: at the beginning, after every 100 frames and
/// at the end. `user` is what the caller passed; the record is valid during the call only. A result other
/// than 0 cancels. The function may use other handles; it must return: no exception, no longjmp.
typedef int32_t (*trnmpa_progress_function)(void* user, const trnmpa_index_progress* progress);

/// Builds the index of the media file `path`, beside it, under its full name with ".idx" appended. Returns
/// when it is done. `progress` (with `user`) and `result` may be null; `result` gets the last state, after a
/// failure or a cancellation too.
///
/// The index is written under another name in the same folder and takes its place when it is complete. So an
/// index that was there before is replaced only then, and stays after a failure or a cancellation. (The C++
/// interfaces empty it at once.) On Windows a reader that has the file open with its index keeps the index
/// from being replaced: TRNMPA_ERROR_INDEX_WRITE. Readers that are open go on without the new index.
TRN_EXPORT trnmpa_result trnmpa_index_build_utf8(const char* path, trnmpa_progress_function progress,
                                                 void* user, trnmpa_index_progress* result) TRNMPA_NOEXCEPT;
/// The same with a path in UTF-16.
TRN_EXPORT trnmpa_result trnmpa_index_build_utf16(const uint16_t* path, trnmpa_progress_function progress,
                                                  void* user, trnmpa_index_progress* result) TRNMPA_NOEXCEPT;

#ifdef __cplusplus
}
#endif

// NOLINTEND(modernize-deprecated-headers,modernize-use-using)
