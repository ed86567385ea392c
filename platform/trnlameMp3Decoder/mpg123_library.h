/// libmpg123, loaded when the first decoder asks for it.
#pragma once

#include "os/shared_library.h"

#include <mpg123.h>

#include <memory>

namespace mp3 {

/// The functions of libmpg123 that decode frames. A module beside which the library is missing loads all the
/// same; it has no such decoder then.
class Mpg123Library {
public:
    /// The library, which all decoders share; it is unloaded with the last of them. Null when it is not there
    /// or does not start.
    static std::shared_ptr<const Mpg123Library> Load();

    decltype(&mpg123_new) New = nullptr;
    decltype(&mpg123_delete) Delete = nullptr;
    decltype(&mpg123_param) SetParameter = nullptr;
    decltype(&mpg123_format_none) AllowNoFormat = nullptr;
    decltype(&mpg123_format) AllowFormat = nullptr;
    decltype(&mpg123_rates) Rates = nullptr;
    decltype(&mpg123_open_feed) OpenFeed = nullptr;
    decltype(&mpg123_close) Close = nullptr;
    decltype(&mpg123_decode) Decode = nullptr;

private:
    bool FindFunctions();

    os::SharedLibrary library_;
};

} // namespace mp3
