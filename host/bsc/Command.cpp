#include "host/bsc/Command.h"

namespace Bsc {

Command::~Command() = default;

QString Command::usageLogInfo() const {
    return QString();
}

} // namespace Bsc
