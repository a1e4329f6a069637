#include "prm/Context.h"

#include <QDebug>

namespace Prm {

namespace {

const int contextMetaType = qRegisterMetaType<Context>("Prm::Context");

} // namespace

QDebug operator<<(QDebug debug, const Context& context) {
    const QDebugStateSaver saver(debug);
    debug.nospace() << "Context(" << context.time << ", " << context.view << ", flags " << context.flags.packed()
                    << ')';
    return debug;
}

} // namespace Prm
