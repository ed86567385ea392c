/// A file that stops being read when the user wants the run to end.
#pragma once

#include "mpa/header_source.h"
#include "mpatool/output/tool_error.h"
#include "os/console.h"

namespace mpatool {

/// Over another source. A search can pass over gigabytes in one call; reading is what it cannot do without.
class InterruptibleSource final : public trnmpa::HeaderSource {
public:
    explicit InterruptibleSource(trnmpa::HeaderSource& source) : source_(source) {}

    /// Throws Interrupted.
    std::size_t Read(std::span<std::uint8_t> destination) override {
        if (os::InterruptRequested())
            throw Interrupted();
        return source_.Read(destination);
    }
    std::int64_t Position() override { return source_.Position(); }
    bool SetPosition(std::int64_t position) override { return source_.SetPosition(position); }

private:
    trnmpa::HeaderSource& source_;
};

} // namespace mpatool
