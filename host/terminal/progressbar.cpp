#include "terminal/progressbar.h"

#include <string>

namespace scribo::host {

namespace {

constexpr int barWidth = 40;
constexpr char eraseLine[] = "\r\033[K";

} // namespace

ProgressBar::ProgressBar(std::FILE* stream, bool isTerminal, int total)
    : stream(stream)
    , isTerminal(isTerminal)
    , total(total)
{
}

ProgressBar::~ProgressBar()
{
    hide();
}

void ProgressBar::show(int done)
{
    if (!isTerminal || total < 1) {
        return;
    }
    const int filled = static_cast<int>(static_cast<long long>(barWidth) * done / total);
    const std::string bar = std::string(filled, '#') + std::string(barWidth - filled, '.');
    std::fprintf(stream, "%s[%s] %d/%d", eraseLine, bar.c_str(), done, total);
    std::fflush(stream);
    isVisible = true;
}

void ProgressBar::hide()
{
    if (!isVisible) {
        return;
    }
    std::fputs(eraseLine, stream);
    std::fflush(stream);
    isVisible = false;
}

} // namespace scribo::host
