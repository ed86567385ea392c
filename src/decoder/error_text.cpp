#include "decoder/error_text.h"

#include "decoder/decoder_interface.h"

namespace trnmpa {

const char* ErrorText(int code) {
    switch (code) {
    case AMP_ERR_NONE:
        return "no error";
    case AMP_ERR_END_OF_STREAM:
        return "unexpected end of stream";
    case AMP_ERR_READ:
        return "read error";
    case AMP_ERR_MPEG25:
        return "cannot process Fraunhofer-IIS MPEG 2.5 stream";
    case AMP_ERR_FREE_FORMAT:
        return "cannot process free-form streams";
    case AMP_ERR_SYNC:
        return "sync error";
    case AMP_ERR_INTERNAL:
        return "**Internal Error**";
    case AMP_ERR_NOT_ENOUGH_DATA:
        return "not enough data to decode frame";
    default:
        return "unknown error";
    }
}

} // namespace trnmpa
