#include "mpatool/waveform/png_writer.h"

#include "mpatool/output/tool_error.h"
#include "mpatool/waveform/raster.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <new>
#include <string>

namespace mpatool {

namespace {

constexpr std::int32_t kRowsAtOnce = 64;

/// libpng's way to fail is a long jump, which must not pass objects with destructors: each step runs between
/// a `setjmp` of its own and the library, and bytes are kept until the step is over.
class PngFile {
public:
    explicit PngFile(const WriteBytes& write) : write_(write) {
        png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, Fail, Ignore);
        info_ = png_ == nullptr ? nullptr : png_create_info_struct(png_);
        if (info_ == nullptr) {
            png_destroy_write_struct(&png_, nullptr);
            throw std::bad_alloc();
        }
        png_set_write_fn(png_, this, Collect, nullptr);
    }
    ~PngFile() { png_destroy_write_struct(&png_, &info_); }
    PngFile(const PngFile&) = delete;
    PngFile& operator=(const PngFile&) = delete;

    void Begin(const Drawing& drawing) {
        std::array<png_color, kInks> palette{};
        for (std::size_t i = 0; i < kInks; ++i) {
            const Color color = ColorOf(static_cast<Ink>(i));
            palette[i] = {color.red, color.green, color.blue};
        }
        Run([&] {
            png_set_IHDR(png_, info_, static_cast<png_uint_32>(drawing.Width()),
                         static_cast<png_uint_32>(drawing.Height()), 8, PNG_COLOR_TYPE_PALETTE,
                         PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
            png_set_PLTE(png_, info_, palette.data(), static_cast<int>(palette.size()));
            png_set_filter(png_, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
            png_write_info(png_, info_);
        });
    }

    void AddRows(std::span<const std::uint8_t> pixels, std::size_t width) {
        Run([&] {
            for (std::size_t at = 0; at < pixels.size(); at += width)
                png_write_row(png_, &pixels[at]);
        });
    }

    void End() {
        Run([&] { png_write_end(png_, info_); });
    }

private:
    template <typename Step>
    bool Succeeds(const Step& step) {
        if (setjmp(png_jmpbuf(png_)) != 0)
            return false;
        step();
        return true;
    }

    template <typename Step>
    void Run(const Step& step) {
        if (!Succeeds(step))
            throw ToolError("libpng: cannot write the picture");
        if (lacksMemory_)
            throw std::bad_alloc();
        write_(bytes_);
        bytes_.clear();
    }

    [[noreturn]] static void Fail(png_structp png, png_const_charp) { png_longjmp(png, 1); }
    static void Ignore(png_structp, png_const_charp) {}

    static void Collect(png_structp png, png_bytep bytes, std::size_t count) noexcept {
        auto& self = *static_cast<PngFile*>(png_get_io_ptr(png));
        try {
            self.bytes_.append(reinterpret_cast<const char*>(bytes), count);
        } catch (const std::bad_alloc&) {
            self.lacksMemory_ = true;
        }
    }

    const WriteBytes& write_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    std::string bytes_;
    bool lacksMemory_ = false;
};

} // namespace

void WritePng(const Drawing& drawing, const WriteBytes& write) {
    PngFile file(write);
    Raster raster(drawing);
    file.Begin(drawing);
    for (std::int32_t top = 0; top < drawing.Height(); top += kRowsAtOnce)
        file.AddRows(raster.Paint(top, std::min(kRowsAtOnce, drawing.Height() - top)),
                     static_cast<std::size_t>(drawing.Width()));
    file.End();
}

} // namespace mpatool
