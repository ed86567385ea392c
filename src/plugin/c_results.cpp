#include "plugin/c_results.h"

#include "index/index_format.h"
#include "os/file.h"

trnmpa_result trnmpa::WhyNotOpened(const std::wstring& path) {
    const std::wstring index = IndexPathFor(path);
    os::File file;
    if (!file.Open(path))
        return TRNMPA_ERROR_FILE;
    return os::FileExists(index) && !file.Open(index) ? TRNMPA_ERROR_INDEX : TRNMPA_ERROR_FORMAT;
}

const char* trnmpa_error_text(trnmpa_result result) noexcept {
    switch (result) {
    case TRNMPA_OK:
        return "no error";
    case TRNMPA_END:
        return "the stream has ended";
    case TRNMPA_ERROR_ARGUMENT:
        return "an argument is null, has a wrong size or is out of its range";
    case TRNMPA_ERROR_PATH:
        return "the path is empty, too long or no valid text";
    case TRNMPA_ERROR_MEMORY:
        return "memory ran out";
    case TRNMPA_ERROR_FILE:
        return "the media file cannot be opened";
    case TRNMPA_ERROR_INDEX:
        return "the index beside the media file cannot be opened";
    case TRNMPA_ERROR_FORMAT:
        return "the file holds no MPEG audio that can be read";
    case TRNMPA_ERROR_DECODER:
        return "the decoder that the settings ask for is not there";
    case TRNMPA_ERROR_DECODE:
        return "a part of the stream cannot be decoded";
    case TRNMPA_ERROR_BUFFER:
        return "the buffer is too small";
    case TRNMPA_ERROR_UNSUPPORTED:
        return "slices of that time or format are not served";
    case TRNMPA_ERROR_TOO_LARGE:
        return "the media file is too large for an index";
    case TRNMPA_ERROR_INDEX_WRITE:
        return "the index cannot be written";
    case TRNMPA_ERROR_CANCELLED:
        return "cancelled";
    case TRNMPA_ERROR_UNEXPECTED:
        return "an unexpected failure";
    default:
        return "an unknown result";
    }
}
