#pragma once

namespace trnmpa {

/// The fixed text for an AMPError code; "unknown error" for any other number.
const char* ErrorText(int code);

} // namespace trnmpa
