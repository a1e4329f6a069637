#pragma once

// The parameter in project text, and its keyframes in text of their own. Each line's reader follows its writer's order.

#include "prm/Parameter.h"
#include "prm/ProjectFileVersion.h"
#include "prm/parameter/TypedSerialisedKeyframe.hpp"
#include "prm/text/KeyframeText.h"
#include "prm/text/LineNotes.h"
#include "prm/text/LineParts.h"
#include "prm/text/PlainNumbers.h"
#include "prm/text/TextTokens.h"
#include "prm/track/KeyframeSearch.h"
#include "prm/untyped/ReadingScope.h"
#include "prm/untyped/Restoring.h"

#include <boost/make_shared.hpp>

#include <algorithm>

namespace Prm {

namespace detail {

template <class T> QString valueText(const T& value) {
    QString text;
    ValueType<T>::write(text, value);
    return text;
}

} // namespace detail

template <class T> bool Parameter<T>::bStreamOut(QTextStream& stream, const QString& prefix, bool withName) const {
    const QString start = detail::lineStart(prefix, scriptName(), withName);
    const View defaultView;
    QString text;
    const std::vector<View> views = viewList();
    const bool onlyDefaultView = views.size() == 1 && views.front() == defaultView;
    if (onlyDefaultView && keyframesToWrite(defaultView).isEmpty()) {
        addViewValues(text, start, defaultView, false);
    } else {
        addViewList(text, start, views);
        for (const View view : views)
            addViewValues(text, start, view, true);
    }
    for (const View view : views) {
        if (!keyframesToWrite(view).isEmpty())
            addStaticValue(text, start + view.toString(), view);
    }
    writeHidden(text, start);
    if (isKeyframed()) {
        detail::addLine(text, start, ParameterStrings::before, qstrExtrapolationTypeString(m_extrapolationBefore));
        detail::addLine(text, start, ParameterStrings::after, qstrExtrapolationTypeString(m_extrapolationAfter));
    }
    writeMaster(text, start);
    const detail::PlainNumbers plain(stream);
    stream << text << Qt::flush;
    return true;
}

template <class T>
void Parameter<T>::writeSingleViewValues(QTextStream& stream, const QString& prefix, const View& view,
                                         bool forceViewPrefix) const {
    QString text;
    addViewValues(text, prefix, view, forceViewPrefix);
    const detail::PlainNumbers plain(stream);
    stream << text << Qt::flush;
}

template <class T>
void Parameter<T>::writeStaticValue(QTextStream& stream, const QString& prefix, const View& view) const {
    QString text;
    addStaticValue(text, prefix + view.toString(), view);
    const detail::PlainNumbers plain(stream);
    stream << text << Qt::flush;
}

/// The keyframes of a view, none where the parameter is not keyframed.
template <class T> auto Parameter<T>::keyframesToWrite(const View& view) const -> KeyframeVector {
    return isKeyframed() ? m_views.resolve(view).keyframes : KeyframeVector();
}

template <class T> void Parameter<T>::addViewList(QString& text, const QString& start, const std::vector<View>& views) {
    QString list(QLatin1Char('['));
    for (const View view : views) {
        list += QString::number(view.id());
        if (view != views.back())
            list += QLatin1String(", ");
    }
    detail::addLine(text, start, ParameterStrings::views, list + QLatin1Char(']'));
}

template <class T>
void Parameter<T>::addViewValues(QString& text, const QString& start, const View& view, bool forceViewPrefix) const {
    const KeyframeVector keyframes = keyframesToWrite(view);
    QString value;
    for (const KeyframeData<T>& keyframe : keyframes) {
        value.resize(0);
        ValueType<T>::write(value, keyframe.value);
        text += start;
        detail::writeKeyframe(text, view, keyframe.time, value, keyframe.interpolationData);
        text += QLatin1Char('\n');
    }
    if (keyframes.isEmpty()) {
        const bool prefixed = forceViewPrefix || view != View(View::defaultViewId());
        addStaticValue(text, prefixed ? start + view.toString() : start, view);
    }
}

template <class T> void Parameter<T>::addStaticValue(QString& text, const QString& start, const View& view) const {
    detail::addLine(text, start, ParameterStrings::value, detail::valueText(m_views.resolve(view).staticValue));
}

template <class T>
bool Parameter<T>::streamInValue(const QString& line, const ProjectFileVersion& version, TextConversion convert) {
    const ReadingScope reading(*this);
    const bool resetsViews = version.streamVersion >= StreamVersion::anyViewList;
    if (detail::beginsWith(line, ParameterStrings::views)) {
        if (resetsViews)
            readViewList(line);
        return true;
    }
    QStringView behindView = line;
    View view;
    const bool prefixed = View::extractStringPrefix(behindView, view);
    if (detail::hasKey(behindView, ParameterStrings::keyframes)) {
        TypedSerialisedKeyframe keyframe;
        keyframe.view = view;
        keyframe.valueMapper = convert;
        keyframe.setFromText(behindView);
        if (!isKeyframed())
            detail::LineNotes::addLoss("keyframe of a parameter that is not animated");
        readIntoView(view, [&] { importKeyframe(keyframe); });
        return true;
    }
    const QString rest = behindView.toString();
    if (detail::hasKey(rest, ParameterStrings::value)) {
        const QString text = detail::textBehind(rest);
        const T value = ValueType<T>::read(convert ? convert(text) : text);
        const auto store = [&] {
            if (PVData* const data = targetData(view))
                storeStaticValue(*data, value);
        };
        if (prefixed || !resetsViews)
            readIntoView(view, store);
        else
            readNewViews(store);
        return true;
    }
    return readHidden(rest) || detail::hasKey(rest, ParameterStrings::isKeyframed) || readExtrapolation(rest) ||
           readMaster(rest);
}

/// Begins with no views; where that throws all are as they were.
template <class T> template <class Change> void Parameter<T>::readNewViews(const Change& change) {
    const FastViewMap former(m_views, T());
    const detail::LifeGuard guard(*this);
    const auto renew = [&] {
        clearViewData();
        if (guard.alive())
            change();
    };
    detail::changeOrGoBack(*this, renew, [&] {
        m_views.assignViews(former, [&] { m_isSplit.store(former.count() > 1); });
        ++m_revision;
    });
}

/// Where that throws it leaves no view behind that it has begun.
template <class T> template <class Change> void Parameter<T>::readIntoView(const View& view, const Change& change) {
    const View target = splittable() ? view : View(View::defaultViewId());
    if (target != view)
        detail::LineNotes::addLoss("view of a parameter that has one view only");
    if (m_views.findRealViewData(target)) {
        change();
        return;
    }
    const bool hadNone = m_views.count() == 0;
    detail::changeOrGoBack(*this, change, [&] {
        if (hadNone)
            Parameter::clearViewData();
        else
            Parameter::deleteView(target);
    });
}

template <class T> void Parameter<T>::readViewList(const QString& line) {
    const View defaultView;
    const std::vector<View> views = detail::parseViewList(line);
    readNewViews([&] {
        const detail::LifeGuard guard(*this);
        for (const View view : views) {
            if (!guard.alive())
                return;
            targetData(view);
        }
        if (guard.alive() && splittable() && std::find(views.begin(), views.end(), defaultView) == views.end())
            deleteView(defaultView);
    });
}

template <class T> bool Parameter<T>::readExtrapolation(const QString& line) {
    const bool after = detail::hasKey(line, ParameterStrings::after);
    if (!after && !detail::hasKey(line, ParameterStrings::before))
        return false;
    Extrapolation kind{};
    const QString name = detail::textBetween(line);
    if (bStringToExtrapolationType(name, kind))
        (after ? m_extrapolationAfter : m_extrapolationBefore).store(kind);
    else
        detail::LineNotes::addLoss("extrapolation", name, "is not known");
    return true;
}

template <class T> boost::shared_ptr<SerialisedKeyframe> Parameter<T>::getSerialisedKeyframe(Context context) const {
    auto serialised = boost::make_shared<TypedSerialisedKeyframe>();
    if (context == Context(Context::INVALID_TIME))
        return serialised;
    KeyframeData<T> keyframe;
    const bool found = ask(context.view, [&](const auto& track, View) {
        return detail::findKeyframeAtTime(track.keyframes, context.time, &keyframe);
    });
    if (!found)
        return {};
    serialised->time = keyframe.time;
    serialised->view = context.view;
    serialised->value = keyframe.value;
    serialised->itype = keyframe.interpolationData;
    return serialised;
}

template <class T> void Parameter<T>::importKeyframe(const SerialisedKeyframe& keyframe) {
    const auto& original = dynamic_cast<const TypedSerialisedKeyframe&>(keyframe);
    // Copies: observers of the first change may let go of the original.
    const Context context = original.context();
    const T value = original.value;
    const IType itype = original.itype;
    const detail::LifeGuard guard(*this);
    const auto steps = [&] {
        vSetValue(value, context);
        if (guard.alive())
            vSetInterpolation(itype.interpolation, context);
        // Hooks and observers may have moved it.
        if (guard.alive())
            vSetInterpolationData(itype, keyframeIndexForTime(context), context.view);
    };
    if (!m_views.findRealViewData(splittable() ? context.view : View(View::defaultViewId()))) {
        steps();
        return;
    }
    const StateAround former(*this, {detail::Place::at(context)});
    detail::changeOrGoBack(*this, steps, [&] { former.putBack(*this); });
}

} // namespace Prm
