#include "rules/characterrules.h"

#include <algorithm>
#include <iterator>

namespace scribo::line {

bool CharacterRules::isSame(QChar read, QChar expected) const
{
    return read == expected || std::any_of(groups.begin(), groups.end(), [read, expected](const QString& group) {
        return group.contains(expected) && group.contains(read);
    });
}

QString CharacterRules::kept(const QString& text) const
{
    if (ignored.isEmpty()) {
        return text;
    }
    QString rest;
    std::copy_if(text.begin(), text.end(), std::back_inserter(rest),
        [this](QChar character) { return !ignored.contains(character); });
    return rest;
}

} // namespace scribo::line
