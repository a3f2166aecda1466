#include "qt/PreparedProcess.h"

PreparedProcess::PreparedProcess()
{
    setChildProcessModifier([this] { prepareChild(); });
}
