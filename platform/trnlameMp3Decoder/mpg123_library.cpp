#include "trnlameMp3Decoder/mpg123_library.h"

#include <mutex>
#include <type_traits>

namespace mp3 {

std::shared_ptr<const Mpg123Library> Mpg123Library::Load() {
    static std::mutex mutex;
    static std::weak_ptr<const Mpg123Library> shared;
    const std::lock_guard lock(mutex);
    if (auto library = shared.lock())
        return library;
    auto library = std::make_shared<Mpg123Library>();
    if (!library->library_.LoadCompanion(TRN_MPG123_RUNTIME) || !library->FindFunctions())
        return nullptr;
    shared = library;
    return library;
}

bool Mpg123Library::FindFunctions() {
    bool found = true;
    const auto find = [&](auto& function, const char* name) {
        function = library_.FunctionNamed<std::remove_reference_t<decltype(function)>>(name);
        found &= function != nullptr;
    };
    decltype(&mpg123_init) start = nullptr;
    find(start, "mpg123_init");
    find(New, "mpg123_new");
    find(Delete, "mpg123_delete");
    find(SetParameter, "mpg123_param");
    find(AllowNoFormat, "mpg123_format_none");
    find(AllowFormat, "mpg123_format");
    find(Rates, "mpg123_rates");
    find(OpenFeed, "mpg123_open_feed");
    find(Close, "mpg123_close");
    find(Decode, "mpg123_decode");
    return found && start() == MPG123_OK;
}

} // namespace mp3
