#include "prm/Context.h"

#include "prm/ParameterWithoutType.h"

#include <QDebug>

namespace Prm {

namespace {

const int contextMetaType = qRegisterMetaType<Context>("Prm::Context");

} // namespace

Context KeyframeIndex::toContext() const {
    if (view == View::INVALID() || !parameter)
        return Context::INVALID_TIME;
    return parameter->keyframeTime(index, view);
}

QDebug operator<<(QDebug debug, const Context& context) {
    const QDebugStateSaver saver(debug);
    debug.nospace() << "Context(" << context.time << ", " << context.view << ", flags " << context.flags.packed()
                    << ')';
    return debug;
}

} // namespace Prm
