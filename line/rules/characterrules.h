#pragma once

#include <QString>
#include <QStringList>

namespace scribo::line {

/// Which characters a model cannot tell apart, and which it ignores, as its package says. Judged as the plug-in does.
struct CharacterRules
{
    QStringList groups; ///< each a set of characters that may stand for one another
    QString ignored; ///< characters that count neither in a reading nor in what is expected

    /// Whether a character that was read may stand where another is expected.
    bool isSame(QChar read, QChar expected) const;

    /// `text` without the ignored characters.
    QString kept(const QString& text) const;
};

} // namespace scribo::line
