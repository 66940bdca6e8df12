#include "inspect/help.h"

namespace scribo::host {

const char helpText[] = R"(Usage: scribo-inspect [OPTION]... PICTURE|FOLDER...
Reads and judges the printed text in pictures through the processor plug-in.

where     --region X,Y,W,H     one line of text, in pixels; repeatable. Without
                               regions the whole picture is one
          --regions FILE.json  [[X,Y,W,H], ...] for all pictures, or an object
                               {"PICTURE": [...]}; a region may also be
                               {"rect": [..], "reference": "..", "count": [..]}
judging   --compare off|fixed|auto    --reference TEXT    --count MIN:MAX
settings  --model NAME         or its beginning; default: the first one
          --settings FILE.json         start with these settings; must exist
          --save-settings FILE.json    write them at the end, as learned
          --set N=VALUE        a parameter: a number, LOW:HIGH limits, a text, a
                               choice's number or label, or on,off,...
          --list-models        --list-params
output    --json               JSON lines instead of the table
          --quiet              the summary only
          --overlay DIR        pictures with the result drawn over them, PNG
          --records FILE       result records, to .jsonl or .csv; repeatable
archive   --archive DIR        keep region pictures below DIR/AISavePic
          --removable DIR      the same, as on a removable disk: without a cap
          --save ok,ng         which of them (one or both)
          --identity C1_T1     camera and tool
running   --work DIR           working directory, with the folder "model"
          --plugin FILE.so     default: $SCRIBO_PLUGIN, else the one built here
          --log FILE           default: in the folder for temporary files
          -v                   show the log    --help    --version

Exit: 0 all OK, 1 some NG, 2 a fault (named; the other pictures are inspected).
)";

} // namespace scribo::host
