#!/usr/bin/env python3
"""A host in Python that needs no compiler: describes a file, writes its sound to a WAV file, builds its index.

    python_host.py MODULE FILE OUTPUT.wav

MODULE is libtrnmpafileread.so or trnmpafileread.dll.
"""

import ctypes as c
import sys
import wave

OK, CANCELLED = 0, -13
PIECE = 65536  # samples a read


class Info(c.Structure):
    """trnmpa_info"""

    _fields_ = [(name, c.c_uint32) for name in (
        "struct_size", "layer", "mpeg_version", "sample_rate", "channels", "bits_per_sample", "block_bytes",
        "bit_rate", "bit_rate_kind", "has_index", "delay", "length_kind")] + [
        ("length", c.c_int64), ("duration", c.c_int64)]


class ReadResult(c.Structure):
    """trnmpa_read_result"""

    _fields_ = [("struct_size", c.c_uint32), ("at_end", c.c_uint32), ("samples", c.c_uint64), ("end", c.c_int64)]


class IndexProgress(c.Structure):
    """trnmpa_index_progress"""

    _fields_ = [("struct_size", c.c_uint32), ("frames", c.c_uint32), ("bytes_done", c.c_uint64),
                ("bytes_total", c.c_uint64)]


Progress = c.CFUNCTYPE(c.c_int32, c.c_void_p, c.POINTER(IndexProgress))


def sized(record):
    return record(struct_size=c.sizeof(record))


class Module:
    """The functions that are used here, with the types of their arguments."""

    def __init__(self, path):
        library = c.CDLL(path)
        library.trnmpa_error_text.restype = c.c_char_p
        library.trnmpa_reader_open_utf8.argtypes = [c.c_char_p, c.POINTER(c.c_void_p)]
        library.trnmpa_reader_info.argtypes = [c.c_void_p, c.POINTER(Info)]
        library.trnmpa_reader_read.argtypes = [c.c_void_p, c.c_int64, c.c_uint32, c.c_void_p, c.c_uint64,
                                               c.POINTER(ReadResult)]
        library.trnmpa_reader_close.argtypes = [c.c_void_p]
        library.trnmpa_reader_close.restype = None
        library.trnmpa_index_build_utf8.argtypes = [c.c_char_p, Progress, c.c_void_p, c.POINTER(IndexProgress)]
        self.library = library

    def require(self, result):
        if result != OK:
            raise OSError(self.library.trnmpa_error_text(result).decode())


class Reader:
    """A file that is open for reading samples."""

    def __init__(self, module, path):
        self.module = module
        self.handle = c.c_void_p()
        module.require(module.library.trnmpa_reader_open_utf8(path.encode(), c.byref(self.handle)))
        self.info = sized(Info)
        module.require(module.library.trnmpa_reader_info(self.handle, c.byref(self.info)))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.module.library.trnmpa_reader_close(self.handle)

    def pieces(self):
        """The PCM of the whole file, piece by piece."""
        block = self.info.block_bytes
        buffer = c.create_string_buffer(max(PIECE * block, 1))
        read = sized(ReadResult)
        position = 0
        while not read.at_end:
            self.module.require(self.module.library.trnmpa_reader_read(
                self.handle, position, PIECE, buffer, len(buffer), c.byref(read)))
            yield buffer.raw[:read.samples * block]
            position += read.samples


def write_wave(module, path, target):
    with Reader(module, path) as reader, wave.open(target, "wb") as output:
        info = reader.info
        print(f"layer {info.layer}, {info.sample_rate} Hz, {info.channels} channels")
        output.setnchannels(info.channels)
        output.setsampwidth(info.bits_per_sample // 8)
        output.setframerate(info.sample_rate)
        for piece in reader.pieces():
            output.writeframes(piece)
        print(f"samples: {output.getnframes()}")


def build_index(module, path):
    """Cancels the first build on its way; an index that was there before would stay."""
    build = module.library.trnmpa_index_build_utf8
    cancel = Progress(lambda _, progress: progress.contents.frames >= 100)
    if build(path.encode(), cancel, None, None) == CANCELLED:
        print("index: cancelled")
    done = sized(IndexProgress)
    module.require(build(path.encode(), Progress(), None, c.byref(done)))
    print(f"index: {done.frames} frames")


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    module = Module(sys.argv[1])
    write_wave(module, sys.argv[2], sys.argv[3])
    build_index(module, sys.argv[2])


main()
