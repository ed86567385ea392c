#include "trnmediadet/media_info.h"

std::int32_t TRN_MediaInfoTransformer::Info1TransToInfo2(const KW_MEDIA_BASE_INFO_ST* first,
                                                         TRN_MEDIA_INFO2* second) {
    if (first == nullptr || second == nullptr)
        return 0;
    // The copy of the path is the one step that can fail; it comes first, so that failure changes nothing.
    second->filePath = first->filePath;
    second->fileSize = first->fileSize;
    second->classIdentifier = first->classIdentifier;
    second->audioCodec = first->audioCodec;
    second->streamPresent = first->streamPresent;
    second->audioPresent = first->audioPresent;
    second->duration = first->duration;
    second->audioFormat = first->audioFormat;
    return 1;
}
