#include "cli/Topics.h"

namespace pixkit::cli {

namespace {

constexpr Topic table[] = {
    {"colours", "How colours are written",
     R"(COLOUR is any of
  orange, rebeccapurple     a name of CSS
  #ff8000, #f80             red, green and blue in 256 steps or sixteen
  #ff8000c0, #f80c          the same and alpha, where a colour may be translucent
  rgb(255,128,0)            the same in numbers up to 255 or in percentages
  rgba(255,128,0,0.75)      and alpha, up to 1 or in per cent
  transparent               nothing at all
Translucent colours are for --pad, and for the canvas of compose and sheet. In most shells # and brackets need quotation
marks, as in "#ff8000"; names never do.
)"},
    {"sizes", "How sizes are written",
     R"(SIZE, for --resize, is any of
  640x480                   as large as goes into that box, in proportion
  640x, 640                 640 pixels wide, in proportion
  x480                      480 pixels high, in proportion
  50%                       a part of the picture's own size
and, behind each but the last, how the picture fits:
  :down      >              never enlarged
  :stretch   !              exactly that size, out of proportion
  :fill      ^              in proportion, so that nothing of the box is left bare; --crop cuts the rest
In most shells the signs need quotation marks, and in cmd.exe "^" has to stand between them; the words never do.
)"},
    {"places", "Where things go",
     R"(PLACE is X,Y: pixels from the left and upper edge (-20,10); left, center, right and top, center, bottom;
percentages between them (0% left, 100% right); each word or percentage with an offset in pixels, which
counts to the right and down: right-10,bottom-10 is ten pixels inside of that corner. One word alone
(center, bottom-10) is centred in what it does not say.
)"},
    {"text", "What is drawn by --text",
     R"(TEXT[:PART]..., where PART is any of
  font=FAMILY               Arial unless said otherwise, or the path of a font file where the system takes one
  size=24, size=5%          in pixels, or in parts of the picture's height; 24 unless said otherwise
  color=COLOUR              black unless said otherwise
  at=PLACE                  center unless said otherwise
  opacity=50%               1 to 100 %
  angle=DEGREES             turned clockwise
  width=300, width=80%      lines are broken to fit, in pixels or in parts of the picture's width
  align=left|center|right   of lines; as in at= unless said otherwise
  bold, italic
In the text \n begins a line, \: is a colon and \\ a backslash.
)"},
    {"layers", "What compose draws",
     R"(FILE[@PLACE][:PART]..., where PART is any of
  60%, opacity=60%          the opacity, 1 to 100 %
  640x480, 640x, x480       a box that the picture is brought into, in proportion
  20%x, x10%, 50%x50%       the same in parts of the canvas
  scale=50%                 a part of the picture's own size
  fit, down, stretch, fill  how it is brought into the box, or else the canvas: in proportion, in proportion
                            but never enlarged, out of proportion, in proportion and covering it all
What lies outside of the canvas is left out. A name that itself ends like a place or a part needs one behind it,
such as odd@center@0,0.
)"},
    {"formats", "What is read and written",
     R"(PNG, GIF, JPEG, BMP, TGA, icons and cursors are read, by what the files hold, and written, by their
extensions: .png, .gif, .jpg, .bmp, .tga, .ico and .cur. --to says the format where no extension does.
)"},
    {"files", "Pipes, folders, and files that are there",
     R"(- is standard input or output, and --to says in which format; /dev/stdin, /dev/stdout and /dev/fd/N are pipes,
too. A file of that name is ./-. Behind -- all words are names, whatever they begin with.
With --recursive a folder is the pictures in it, and in the folders in it; results lie in folders of the same names.
An existing file is replaced after a question at a terminal, and elsewhere kept, which is a failure. --overwrite
replaces it, --no-overwrite keeps it, --skip-newer replaces it if it is older than its picture.
)"},
    {"exit-codes", "What the command returns",
     R"(0   done
1   some input failed, and the others are done; or the output could not be written
2   the command line makes no sense, and nothing was done
On Linux a shell shows 130, 141 and 143 where a signal has ended it: an interrupt, that nobody reads its output any
longer, a request. What was done by then is there and whole. So it is of a run that was killed (137), but of files that
it was about to name, and on network file systems of all that it was writing, it may leave drafts, ~pixkit..., which
--recursive takes for no pictures.
)"},
};

} // namespace

std::span<const Topic> topics() {
    return table;
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
