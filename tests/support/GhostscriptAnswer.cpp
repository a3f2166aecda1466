#include "support/GhostscriptAnswer.h"

namespace {

QByteArray quoted(const QString& word)
{
    return '\'' + word.toUtf8().replace('\'', R"('\'')") + '\'';
}

QByteArray quoted(const QStringList& words)
{
    QByteArray line;
    for (const QString& word : words) {
        line += quoted(word) + ' ';
    }
    return line;
}

} // namespace

GhostscriptAnswer GhostscriptAnswer::print(const QByteArray& text)
{
    return GhostscriptAnswer("printf '%s' '" + text + "'\n");
}

GhostscriptAnswer GhostscriptAnswer::pageSizes(int count)
{
    return print(QByteArray("0 0 612 792\n").repeated(count));
}

GhostscriptAnswer GhostscriptAnswer::bytes(int count, char value)
{
    const QByteArray zeros = "head -c " + QByteArray::number(count) + " /dev/zero";
    const QByteArray octal = QByteArray::number(static_cast<unsigned char>(value), 8);
    return GhostscriptAnswer(value == '\0' ? zeros + '\n'
                                           : zeros + " | tr '\\000' '\\" +
                                                 octal.rightJustified(3, '0') + "'\n");
}

GhostscriptAnswer GhostscriptAnswer::numberedPages()
{
    return GhostscriptAnswer(R"sh(for argument; do
  case $argument in
    -dFirstPage=*) page=${argument#*=} ;;
    -dLastPage=*) last=${argument#*=} ;;
    -g*) size=${argument#-g} ;;
  esac
done
bytes=$(((${size%x*} + 7) / 8 * ${size#*x}))
while [ "$page" -le "$last" ]; do
  head -c "$bytes" /dev/zero | tr '\000' "\\$(printf '%03o' "$page")"
  page=$((page + 1))
done
)sh");
}

GhostscriptAnswer GhostscriptAnswer::remark(const QByteArray& text)
{
    return print(text).asRemark();
}

GhostscriptAnswer GhostscriptAnswer::remarkOnOptions()
{
    return GhostscriptAnswer("printenv GS_OPTIONS >&2 || printf none >&2\n");
}

GhostscriptAnswer GhostscriptAnswer::command(const QStringList& words)
{
    return GhostscriptAnswer(quoted(words) + '\n');
}

GhostscriptAnswer GhostscriptAnswer::note(const QString& file)
{
    return GhostscriptAnswer("echo >>" + quoted(file) + '\n');
}

GhostscriptAnswer GhostscriptAnswer::waitFor(const QString& file)
{
    return GhostscriptAnswer("until [ -e " + quoted(file) + " ]; do sleep 0.01; done\n");
}

GhostscriptAnswer GhostscriptAnswer::pause()
{
    return GhostscriptAnswer("sleep 0.02\n");
}

GhostscriptAnswer GhostscriptAnswer::becomeNoProgram()
{
    return GhostscriptAnswer("printf '\\177ELF' >\"$0.new\"\n"
                             "chmod +x \"$0.new\"; mv \"$0.new\" \"$0\"\n");
}

GhostscriptAnswer GhostscriptAnswer::real()
{
    return GhostscriptAnswer("exec \"${real:?Ghostscript is not installed}\" \"$@\"\n");
}

GhostscriptAnswer GhostscriptAnswer::realThroughFile(const QString& file)
{
    const GhostscriptAnswer redirected("unset GS_OPTIONS\n"
                                       "for argument; do\n"
                                       "  shift\n"
                                       "  [ \"$argument\" != -sOutputFile=- ] || "
                                       "argument=-sOutputFile=" +
                                       quoted(file) +
                                       "\n"
                                       "  set -- \"$@\" \"$argument\"\n"
                                       "done\n");
    return redirected +
           GhostscriptAnswer("(" + real().m_steps + ") >&2 && cat " + quoted(file) + '\n');
}

GhostscriptAnswer GhostscriptAnswer::exit(int code)
{
    return GhostscriptAnswer("exit " + QByteArray::number(code) + '\n');
}

GhostscriptAnswer GhostscriptAnswer::crash(int signal)
{
    return GhostscriptAnswer("kill -" + QByteArray::number(signal) + " $$\n");
}

// "exec" leaves one process, which a signal for the stand-in ends.
GhostscriptAnswer GhostscriptAnswer::hang()
{
    return GhostscriptAnswer("exec sleep 1000\n");
}

GhostscriptAnswer GhostscriptAnswer::endlessBytes()
{
    return GhostscriptAnswer("exec cat /dev/zero\n");
}

GhostscriptAnswer GhostscriptAnswer::asRemark() const
{
    return GhostscriptAnswer("{\n" + m_steps + "} >&2\n");
}

GhostscriptAnswer GhostscriptAnswer::through(const QStringList& filter) const
{
    return GhostscriptAnswer("(\n" + m_steps + ") 2>&- | " + quoted(filter) + '\n');
}

GhostscriptAnswer GhostscriptAnswer::repeated(int count) const
{
    return GhostscriptAnswer(m_steps.repeated(count));
}

GhostscriptAnswer GhostscriptAnswer::choice(const GhostscriptAnswer& query,
                                            const GhostscriptAnswer& run,
                                            const std::map<int, GhostscriptAnswer>& runsFrom)
{
    QByteArray steps = "case \" $* \" in\n*' -c '*)\n" + query.m_steps + ";;\n";
    for (const auto& [page, answer] : runsFrom) {
        steps += "*' -dFirstPage=" + QByteArray::number(page) + " '*)\n" + answer.m_steps + ";;\n";
    }
    return GhostscriptAnswer(steps + "*)\n" + run.m_steps + ";;\nesac\n");
}

GhostscriptAnswer GhostscriptAnswer::recordArguments(const QString& file)
{
    return GhostscriptAnswer(R"({ [ $# -eq 0 ] || printf '%s\000' "$@"; printf '\001'; } >>)" +
                             quoted(file) + '\n');
}

// A run that has ended, or was killed and waited for, has no process any more.
GhostscriptAnswer GhostscriptAnswer::recordProcess(const QString& file, const QString& overlaps)
{
    return GhostscriptAnswer("read before 2>&- <" + quoted(file) +
                             " && kill -0 \"$before\" 2>&- && echo >>" + quoted(overlaps) +
                             "\necho $$ >" + quoted(file) + '\n');
}

QByteArray GhostscriptAnswer::script(const QString& realGhostscript) const
{
    return "#!/bin/sh\nreal=" + quoted(realGhostscript) + '\n' + m_steps;
}
