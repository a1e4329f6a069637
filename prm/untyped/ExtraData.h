#pragma once

#include "host/bsc/QPointerEx.h"
#include "host/bsc/UniqBag.h"

#include <QMap>
#include <QPointer>
#include <QString>
#include <boost/function.hpp>

#include <atomic>

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
