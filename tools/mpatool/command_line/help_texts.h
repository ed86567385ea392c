/// The longer texts of --help.
#pragma once

namespace mpatool {

inline constexpr const char* kDescription =
    "Describes, decodes and indexes MPEG audio files (MP2, MP3) with the reader module.";

inline constexpr const char* kExitFooter = R"(Exit status:
  0    all went well
  1    a file could not be read, decoded or written; the reason stands on standard error
  2    the command line makes no sense
  3    check has found damage, and all files could be checked
  130  ended by Ctrl-C; nothing half-made was left)";

inline constexpr const char* kInputFooter =
    R"(What comes by standard input is kept in a private temporary file, as long as what arrives, and
removed at the end. A file of the name - is ./-.

)";

inline constexpr const char* kInfoFooter =
    R"(Three sources are kept apart, for they may well differ:
  claimed    what the file says of itself: the encoder's frame ("Info", "Xing" or "VBRI") with the
             delay and padding that the encoder added, and tags by size and position
  counted    what a walk over all frames finds; with an index beside FILE, from its first entry on
  reported   what the module tells a host: its probe and its sample reader
What the sample reader delivers follows from the counted frames and the decoder's own delay.

)";

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

inline constexpr const char* kWaveformFooter =
    R"(Each column shows the lowest and the highest of its samples and, darker, their RMS. A mark at the
edge stands where samples are at full scale, which clipped sound is; their number is in the legend.
SAMPLES and TIME are as in decode.

--bitrate adds a lane with the bit rate: a line for the mean of a column's frames, behind it the
lowest to the highest. --frames adds two for Layer III: the shares of long, start, short, stop and
mixed blocks among the granules of both channels, and how many bytes from before a frame hold main
data of it (the reservoir).

Without -o the output is FILE's name with the extension .png (.svg with --format svg) in the
current folder. It gets its name only when it is complete. Without --format the extension of OUT
decides. Without --height the picture is 480 pixels high, and 80 more for each lane.

)";

inline constexpr const char* kSelftestFooter =
    R"(Loads the module, the one beside this program or that of --module, and walks through all that a
host may do with it: identity records, names of files, calls in every order, PCM of built-in streams,
two readers at once, an index. A line for each check begins with "good" or "BAD"; the exit status is 0
when all are good. A module that ends the program is reported as such.

)";

inline constexpr const char* kCheckFooter =
    R"(A line sums up each file; the lines below it tell the place in the file, the time in the sound and
what is there:
  junk                bytes that belong to no frame
  lost sync           a frame cut short, which hides the frames behind it; a stretch without a
                      header where an index ends; bytes of a tag taken for frames
  CRC failure         a frame whose CRC word does not fit what it protects
  reservoir underrun  Layer III main data that are not there, as when frames are missing
  reservoir overrun   Layer III main data that would reach behind their frame
  format change       frames of another format, which are not delivered
  truncation          a last frame that is cut off, or less sound than the encoder wrote
  stale index         an index beside FILE that is not of this FILE
  unreadable          the module does not open FILE, or fails to decode it
Tags, and places from which jumps through an index may miss, are listed but are no damage.

Times are those of reading without an index. An index is scanned for in memory; nothing is written.
Places with at most one frame between them share a line. At most 1000 lines a file are printed; the
counts are of all.

)";

} // namespace mpatool
