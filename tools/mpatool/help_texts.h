/// The longer texts of --help.
#pragma once

namespace mpatool {

inline constexpr const char* kDescription =
    "Describes, decodes and indexes MPEG audio files (MP2, MP3) with the reader module.";

inline constexpr const char* kExitFooter = R"(Exit status:
  0    all went well
  1    a file could not be read, decoded or written; the reason stands on standard error
  2    the command line makes no sense
  130  ended by Ctrl-C; nothing half-made was left)";

inline constexpr const char* kDecodeFooter =
    R"(SAMPLES is a plain integer, counted per channel at the stream's own rate. TIME is 62.5s, 250ms,
1h2m, 1:02.5 or 1:00:00.

Without -o the output is FILE's name with the extension .wav (.raw with --format raw) in
the current folder. It gets its name only when it is complete. Pipes and devices work too.
Without --format the extension of OUT decides: .wav, .raw or .pcm; pipes and devices get WAV.
A WAV file whose sizes do not fit 32 bits is written as RF64. Raw is interleaved little-endian
PCM, 8-bit samples unsigned, wider ones signed.

Without --rate, --channels and --bits the PCM is what the module delivers, 16 bits in the
stream's own rate and channels. A stretch of a converted stream is that stretch of the whole.

Without --decoder the module's settings file, trnfsdk.ini, chooses. With it the module is loaded
from a private temporary folder when that file says another one; a trnfsdk.ini beside this program
comes before all others, and stops the run when it says another.

--kernels has the module's own decoder use the instructions named, or none but the portable code's
with plain. All give the same PCM; without it the fastest are used that the processor has.

Without an index beside FILE, --start decodes what comes before and drops it. With one it jumps,
and sample 0 is another place: an index leaves the first frame out, and with it no decoder delay
is skipped.

)";

inline constexpr const char* kSlicesFooter =
    R"(MS is milliseconds, 1 to 10000, with up to four decimal places. Slice n begins n times MS behind
slice 0, cut to whole samples, so the slices in order are the stream. What does not fill a last
slice at the end of the stream is lost; a line on standard error says how much that was.

Without an index slice 0 begins behind the decoder's delay; with one it begins at the index's
first frame. --start jumps, as a host does: in streams of variable bit rate without an index
slices are found by an estimate. Slices always come from the module's own decoder.

Output and --format are as in decode. The stream is decoded twice: how many slices it holds must
be known before the first is written.

)";

inline constexpr const char* kIndexFooter =
    R"(The index of song.mp3 is song.mp3.idx beside it; the module finds it there by itself. It gets its
name only when it is complete, so an existing one stays whole until then; in a file system without
links it is moved aside meanwhile. A run that is killed may leave files named .unfinished-*.

--verify writes nothing. It prints "good" and the number of frames, "stale" and the first
difference, or "no index" for each file; the exit status is 0 when all are good.

)";

inline constexpr const char* kFramesFooter =
    R"(The frames are those that the module delivers: with an index beside FILE from its first entry on,
else from the first frame that is no "Info" frame. A frame's first sample is its place in what
the module delivers; what lies before sample 0 is left out there.

)";

} // namespace mpatool
