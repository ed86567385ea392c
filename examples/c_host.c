/* A host in C99: describes a file, reads its samples to the end, then its slices, and builds an index.
 *
 *     c_host FILE
 */
#include "trnmpafileread/c_api.h"

#include <stdio.h>

static int failed(const char* what, trnmpa_result result) {
    fprintf(stderr, "%s: %s\n", what, trnmpa_error_text(result));
    return 1;
}

static int read_samples(const char* file) {
    static int16_t pcm[2 * 4096]; /* two channels at most */
    trnmpa_reader* reader = NULL;
    trnmpa_info info = {.struct_size = sizeof info};
    trnmpa_read_result read = {.struct_size = sizeof read};
    trnmpa_result result = trnmpa_reader_open_utf8(file, &reader);
    int64_t position = 0;
    if (result != TRNMPA_OK)
        return failed(file, result);
    trnmpa_reader_info(reader, &info);
    printf("layer %u, %u Hz, %u channels, %u kbit/s\n", (unsigned)info.layer, (unsigned)info.sample_rate,
           (unsigned)info.channels, (unsigned)info.bit_rate / 1000);
    while (result == TRNMPA_OK && !read.at_end) {
        result = trnmpa_reader_read(reader, position, 4096, pcm, sizeof pcm, &read);
        position += (int64_t)read.samples;
    }
    trnmpa_reader_close(reader);
    if (result != TRNMPA_OK)
        return failed("reading", result);
    printf("samples: %ld\n", (long)position);
    return 0;
}

/* Slices of 20 ms as mono at 48 kHz. */
static int read_slices(const char* file) {
    trnmpa_slices* slices = NULL;
    trnmpa_slice_options options = {.struct_size = sizeof options};
    trnmpa_slice slice = {.struct_size = sizeof slice};
    trnmpa_result result;
    long count = 0;
    options.sample_rate = 48000;
    options.slice_time = 200000;
    options.channels = 1;
    result = trnmpa_slices_open_utf8(file, &options, &slices);
    if (result != TRNMPA_OK)
        return failed(file, result);
    while ((result = trnmpa_slices_next(slices, &slice)) == TRNMPA_OK)
        ++count; /* slice.data has slice.bytes of PCM until the next call */
    trnmpa_slices_close(slices);
    if (result != TRNMPA_END)
        return failed("slices", result);
    printf("slices: %ld\n", count);
    return 0;
}

/* A host would draw it; it could also give another number than 0 to cancel. */
static int32_t show_progress(void* user, const trnmpa_index_progress* progress) {
    unsigned* percent = user;
    if (progress->bytes_total != 0)
        *percent = (unsigned)(progress->bytes_done * 100 / progress->bytes_total);
    return 0;
}

static int build_index(const char* file) {
    unsigned percent = 0;
    trnmpa_index_progress done = {.struct_size = sizeof done};
    const trnmpa_result result = trnmpa_index_build_utf8(file, show_progress, &percent, &done);
    if (result != TRNMPA_OK)
        return failed(file, result);
    printf("index: %u frames, %u per cent\n", (unsigned)done.frames, percent);
    return 0;
}

/* On Windows these arguments are not UTF-8 beyond ASCII; a host there takes wmain and the _utf16 functions.
 */
int main(int count, char** arguments) {
    if (count != 2) {
        fprintf(stderr, "usage: c_host FILE\n");
        return 2;
    }
    if (trnmpa_api_version() < TRNMPA_API_VERSION) {
        fprintf(stderr, "the module is older than this program\n");
        return 1;
    }
    return read_samples(arguments[1]) || read_slices(arguments[1]) || build_index(arguments[1]);
}
