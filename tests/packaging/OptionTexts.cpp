#include "packaging/OptionTexts.h"

#include <QRegularExpression>

namespace {

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

QStringList words(const QString& text, const QString& separator)
{
    return sorted(text.split(QRegularExpression(separator), Qt::SkipEmptyParts));
}

QRegularExpressionMatchIterator matches(const QString& text, const QString& pattern)
{
    return QRegularExpression(pattern, QRegularExpression::MultilineOption).globalMatch(text);
}

// Options given as: letter, long name and, if any, the values in one pattern.
OptionTexts optionsByPattern(const QString& text, const QString& pattern)
{
    OptionTexts options;
    for (auto found = matches(text, pattern); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        options[match.captured(2)] = {match.captured(1),
                                      words(match.captured(3), QStringLiteral("\\s+")), QString()};
    }
    return options;
}

QStringList suffixesByPattern(const QString& text, const QString& pattern)
{
    const QRegularExpression expression(pattern, QRegularExpression::MultilineOption);
    return words(expression.match(text).captured(1), QStringLiteral("[|\\s]"));
}

} // namespace

OptionTexts optionsOfHelp(const QString& text)
{
    OptionTexts options;
    const QString pattern =
        QStringLiteral("^  -(\\w) \\[ --([a-z-]+) \\](?: <\\w+>)?((?:.|\n(?!  -|$))*)");
    for (auto found = matches(text, pattern); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        // Options with fixed values end in ": value, value (default: value)".
        const QRegularExpressionMatch list =
            QRegularExpression(QStringLiteral(": ([^()]*)(?:\\(default: (\\w+)\\))?$"))
                .match(match.captured(3).simplified());
        options[match.captured(2)] = {match.captured(1),
                                      words(list.captured(1), QStringLiteral("[,\\s]+")),
                                      list.captured(2)};
    }
    return options;
}

OptionTexts optionsOfManPage(const QString& text)
{
    // Values are the bold words of the paragraph.
    OptionTexts options;
    const QString plain = QString(text).replace(QStringLiteral("\\-"), QStringLiteral("-"));
    const QString pattern = QStringLiteral(
        "^\\.TP\n\\\\fB-(\\w)\\\\fR, \\\\fB--([a-z-]+)\\\\fR.*\n((?:(?!\\.TP|\\.SH).*\n)*)");
    for (auto found = matches(plain, pattern); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        QStringList values;
        for (auto bold = matches(match.captured(3), QStringLiteral("\\\\fB([^\\\\]*)\\\\fR"));
             bold.hasNext();) {
            values << bold.next().captured(1);
        }
        values.removeDuplicates();
        const QRegularExpression sentence(QStringLiteral("^The default is \\\\fB(\\w+)\\\\fR\\.$"),
                                          QRegularExpression::MultilineOption);
        options[match.captured(2)] = {match.captured(1), sorted(values),
                                      sentence.match(match.captured(3)).captured(1)};
    }
    return options;
}

OptionTexts optionsOfBash(const QString& text)
{
    // The names come from the list of all, the values from the branches.
    const OptionTexts branches = optionsByPattern(
        text, QStringLiteral("^ *-(\\w) \\| --([a-z-]+)\\)(?: _morvaltide_words \"([^\"]*)\")?"));
    const QString list =
        QRegularExpression(QStringLiteral("\"(-h --help[^\"]*)\"")).match(text).captured(1);
    OptionTexts options = optionsByPattern(list, QStringLiteral("-(\\w)\\s+--([a-z-]+)"));
    for (auto option = branches.begin(); option != branches.end(); ++option) {
        options[option.key()].values = option->values;
    }
    return options;
}

OptionTexts optionsOfZsh(const QString& text)
{
    return optionsByPattern(
        text, QStringLiteral(
                  "\\{-(\\w)\\+?,--([a-z-]+)=?\\}'\\[[^\\]]*\\](?::[^:]*:(?:\\(([^)]*)\\))?)?"));
}

OptionTexts optionsOfFish(const QString& text)
{
    return optionsByPattern(
        text, QStringLiteral("^complete .* -s (\\w) -l ([a-z-]+)(?: -x)?(?: -a '([^'(]*)')?"));
}

QStringList suffixesOfBash(const QString& text)
{
    return suffixesByPattern(text, QStringLiteral("documents='\\\\\\.\\(([a-z|]*)\\)\\$'"));
}

QStringList suffixesOfZsh(const QString& text)
{
    return suffixesByPattern(text, QStringLiteral("'\\*:document:.*\\*\\.\\(([a-z|]*)\\)"));
}

QStringList suffixesOfFish(const QString& text)
{
    return suffixesByPattern(
        text, QStringLiteral("^complete -c morvaltide -a '\\(__morvaltide_files ([a-z ]*)\\)'"));
}
