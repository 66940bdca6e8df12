#include "inspect/help.h"

namespace scribo::host {

const char helpText[] = R"(Usage: scribo-inspect [OPTION]... PICTURE|FOLDER...
Reads the printed text in pictures with the processor plug-in, and judges it.

where     --region X,Y,W,H     a region with one line of text, in pixels;
                               repeatable; default: the whole picture
          --regions FILE.json  [[X,Y,W,H], ...] for all pictures, or an object
                               {"PICTURE": [...]}; a region may also be
                               {"rect": [..], "reference": "..", "count": [..]}
judging   --compare off|fixed|auto    --reference TEXT    --count MIN:MAX
settings  --model NAME         or its beginning; default: the first model
          --settings FILE.json         start with the settings in this file
          --save-settings FILE.json    save the settings at the end
          --set N=VALUE        set a parameter: a number, limits LOW:HIGH, a
                               text, a choice's number or label, or on,off,...
          --list-models        --list-params
output    --json               print JSON lines instead of the table
          --quiet              print the summary only
          --overlay DIR        save pictures with the result drawn on them, PNG
          --records FILE       save result records, .jsonl or .csv; repeatable
archive   --archive DIR        save pictures of regions below DIR/AISavePic
          --removable DIR      the same as on a removable disk, without a limit
          --save ok,ng         which pictures: ok, ng or both
          --identity C1_T1     camera and tool
running   --work DIR           working directory, with the folder "model"
          --plugin FILE.so     default: $SCRIBO_PLUGIN, else the one built here
          --log FILE           default: in the folder for temporary files
          -v                   show the log    --help    --version

Exit: 0 all OK, 1 some NG, 2 a fault (the other pictures are still inspected).
)";

} // namespace scribo::host
