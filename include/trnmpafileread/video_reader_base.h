/// The host's video counterpart of ITRN_AUDIO_READER_BASE. The module exports its construction and assignment
/// and has no video readers.
#pragma once

#include "trnmpafileread/export.h"

class TRN_EXPORT ITRN_VIDEO_READER_BASE {
public:
    ITRN_VIDEO_READER_BASE();
    ITRN_VIDEO_READER_BASE(const ITRN_VIDEO_READER_BASE& other);            ///< holds nothing to copy
    ITRN_VIDEO_READER_BASE& operator=(const ITRN_VIDEO_READER_BASE& other); ///< holds nothing to copy
    virtual ~ITRN_VIDEO_READER_BASE();
};
