#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

/// What a text says about one option.
struct OptionText
{
    QString letter;
    QStringList values; ///< Sorted; empty if the option has no fixed ones.
    QString defaultValue;
};

/// By long name.
using OptionTexts = QMap<QString, OptionText>;

/// Read the options from the output of --help, from the source of the man page
/// and from the three completion files.
OptionTexts optionsOfHelp(const QString& text);
OptionTexts optionsOfManPage(const QString& text);
OptionTexts optionsOfBash(const QString& text);
OptionTexts optionsOfZsh(const QString& text);
OptionTexts optionsOfFish(const QString& text);

/// The suffixes of documents that the completion files offer, sorted.
QStringList suffixesOfBash(const QString& text);
QStringList suffixesOfZsh(const QString& text);
QStringList suffixesOfFish(const QString& text);
