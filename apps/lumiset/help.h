#pragma once

namespace lumiset::app::help {

inline constexpr const char* kProgram =
    R"(Renders video effects over images and video.

  lumiset list                        the effects there are
  lumiset show "Outline"              an effect's parameters and presets
  lumiset render in.mp4 out.mp4 --effect "Outline" --preset "Bold Red"
)";

inline constexpr const char* kProgramFooter = R"(
The effects come from the module libvantrel_lumiset5.so beside this program, or in ../lib/lumiset or ../lib from there.
--module or the environment variable LUMISET_MODULE name another one.

Exit status: 0 done, 1 failed, 2 wrong usage, 130 interrupted (143 by SIGTERM). Messages go to standard error.
"lumiset render --help" tells how values are written and gives examples.)";

inline constexpr const char* kRender =
    R"(Renders INPUT through one or more effects to OUTPUT.

INPUT is an image, an image sequence (shot_%04d.png or 'shots/*.png'), a video, "-" for standard input, or
"scene[:WIDTHxHEIGHT[:SECONDS[:FPS]]]", a moving picture made here for trying effects; "scene-full" is the same without
its transparent margin, "scene-cutout" its figures over nothing. One picture becomes a video with --duration.
OUTPUT is chosen by its extension; "-" is y4m on standard output. Sound is copied. The file appears under its name
when it is complete: a run that fails or is interrupted leaves what was there before, which is replaced only with
--overwrite or after a question. With --part one part of it is rendered to a file like "OUTPUT.part03of40".
)";

inline constexpr const char* kRenderFooter = R"(
How values are written, as "lumiset show EFFECT" lists them:
  slider   "Width=30"            in the range that the panel shows; "Width=30%" is the same
  colour   "Color=#FF8000"       red, green, blue
  point    "Center=25,75"        percent of the width from the left and of the height from the top
  switch   "Battery=off"         on/off, true/false, yes/no, 1/0
  list     "Blend Mode=Screen"   the item or its number from 0
Case does not matter. A label that occurs twice is told apart by its group box, "Image/Tint=20", or by its number,
"#2=20"; behind --look the effect's name comes first, "Old TV/Noise=20", or "Old TV#2/Noise=20" for the second of them.
With --key the value moves in straight lines from key to key; times, in seconds or h:m:s, count from the start of the file, also
behind --start, and "Width@50%=20" stands in its middle.

Examples:
  A preset on a picture with transparent parts:
    lumiset render logo.png glow.png --effect Outline --preset "Red Glow"
  The same with a thinner band on a clip, whose transparency is kept:
    lumiset render title.mov out.mov --effect Outline --preset "Red Glow" --set Width=10
  A band that grows in two seconds:
    lumiset render title.mov out.mov --effect Outline --key Width@0=0 --key Width@2=60
  Two effects, the second works on the picture of the first:
    lumiset render scene:1280x720:5 out.mp4 --effect Outline --set "Color=#FFD040" --effect Outline --set Width=20
  A look, with a value of one of its effects changed, and an effect behind it:
    lumiset render clip.mp4 out.mp4 --look "Home Video 1986" --set "Old TV/Noise=20" --effect Viewfinder
  An effect where a grey picture is white, and there half of it:
    lumiset render clip.mp4 out.mp4 --effect "Color Fixer Pro" --preset Sepia --mask sky.png --strength 50
  In OpenGL ("lumiset gpu info" tells what there is):
    lumiset render title.mov out.mov --gpu --effect Outline
  From and to another program:
    ffmpeg -i in.avi -f yuv4mpegpipe - | lumiset render - - --effect Outline | ffplay -)";

inline constexpr const char* kJoin =
    R"(Puts the parts of a film together that "lumiset render --part" has made.

Nothing is encoded again: OUTPUT has the pictures that one run would have written, and sound, subtitles, chapters and
tags of the film that the parts were made of. Parts that are missing, there twice, unfinished or damaged, and parts that
were made in another way than the others are refused. Of a sequence of pictures, which is there already, it is only
looked at whether all are there.

  lumiset render film.mov out.mov --look "Home Video 1986" --part 1/2
  lumiset render film.mov out.mov --look "Home Video 1986" --part 2/2
  lumiset join out.mov out.mov.part*of2
)";

inline constexpr const char* kExportSlurm =
    R"(Prints a script that renders INPUT to OUTPUT in parts by jobs of Slurm, and joins them.

  lumiset export slurm film.mov out.mov --look "Home Video 1986" --parts 40 --threads 8 > film.sh
  bash film.sh

It submits an array of one task a part, and a job that joins them when all are done. Tasks whose machine is lost or
that fail are run again; run once more the script renders what is missing alone. --threads are the cores that a task asks
for; a task uses those that it is allotted.
)";

inline constexpr const char* kExportParallel =
    R"(Prints a script that renders INPUT to OUTPUT in parts by GNU parallel on one machine, and joins them.

  lumiset export parallel film.mov out.mov --look "Home Video 1986" --parts 12 --threads 4 > film.sh
  bash film.sh

Run once more the script renders what is missing alone.
)";

inline constexpr const char* kLookSave =
    R"(Writes effects with their settings to a look, a file that "render --look" and every other program here takes.

FILE has the extension .lumilook; a name alone, "My Glow", is kept in ~/.local/share/lumiset/looks, where
"lumiset look list" finds it.

  lumiset look save "My Glow" --effect Outline --preset "Red Glow" --set Width=10 --about "A thin red glow."
  lumiset look save tape.lumilook --look "Home Video 1986" --set "Old TV/Noise=20" --author "A. Person"
)";

inline constexpr const char* kExport =
    R"(Prints what gives an effect the same settings in another program, by way of its frei0r plug-in, and scripts that
render a film in parts on many machines.

  lumiset export ffmpeg "Old TV" --preset Snow -i in.mp4 -o out.mp4
  lumiset export melt Outline --set Width=10 --set "Color=#FFD040"
  lumiset export kdenlive Outline --preset-file glow.lumvc --name Glow > glow.xml

ffmpeg and melt: a line for the shell. kdenlive: a file to put into ~/.local/share/kdenlive/effects; Kdenlive lists it
among the custom effects when it starts next.
)";

}  // namespace lumiset::app::help
