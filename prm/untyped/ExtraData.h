#pragma once

#include "host/bsc/QPointerEx.h"
#include "host/bsc/UniqBag.h"

#include <QMap>
#include <QPointer>
#include <QString>
#include <boost/function.hpp>

#include <atomic>
#include <limits>

namespace Prm {

class ParameterWithoutType;

namespace detail {

/// What most parameters do not have.
struct ExtraData {
    using UpstreamParameters = Bsc::UniqBag<Bsc::detail::QPointerEx<ParameterWithoutType, QPointer>>;
    using TextConversion = boost::function<QString(const QString&)>;

    QMap<QString, TextConversion> additionalScriptNames;
    QString extraName;
    QString pendingMasterParameterId;
    /// Read by evaluation on other threads.
    std::atomic<ParameterWithoutType*> master{nullptr};
    /// The count of changes when the master was set last.
    quint32 tied = std::numeric_limits<quint32>::max();
    // A linked list of the parameters constrained to this one.
    ParameterWithoutType* firstConstrained = nullptr;
    ParameterWithoutType* lastConstrained = nullptr;
    ParameterWithoutType* previousConstrained = nullptr;
    ParameterWithoutType* nextConstrained = nullptr;
    UpstreamParameters upstreamParameters;
    quint64 upstreamConnected = 0;
    QPointer<ParameterWithoutType> viewSelector;
    quintptr viewSelectorCompanion = 0;
};

} // namespace detail
} // namespace Prm
