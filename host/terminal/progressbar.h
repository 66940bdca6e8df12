#pragma once

#include <cstdio>

namespace scribo::host {

/// A line "[####......] 12/30" that is drawn again in its place. Draws only when the stream is a terminal, so that
/// files and pipes stay clean.
class ProgressBar
{
public:
    ProgressBar(std::FILE* stream, bool isTerminal, int total);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(int done);
    /// Takes the bar away, before something else is written to the terminal.
    void hide();

private:
    std::FILE* stream;
    bool isTerminal;
    int total;
    bool isVisible = false;
};

} // namespace scribo::host
