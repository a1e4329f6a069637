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
#include "prm/track/KeyframeInsertion.h"
#include "prm/track/KeyframeSearch.h"
#include "prm/untyped/ReadingScope.h"
#include "prm/untyped/Restoring.h"

#include <boost/make_shared.hpp>

#include <algorithm>

namespace Prm {

namespace detail {

template <class T> void addStaticValue(QString& text, const QString& start, const T& value) {
    QString written;
    ValueType<T>::write(written, value);
    addLine(text, start, ParameterStrings::value, written);
}

/// The keyframes of a view, or the static value where there are none; that without the view's prefix if it may be.
template <class T>
void addTrack(QString& text, const QString& start, const View& view, const Track<T>& track, bool mayOmitView) {
    QString value;
    for (const KeyframeData<T>& keyframe : track.keyframes) {
        value.resize(0);
        ValueType<T>::write(value, keyframe.value);
        text += start;
        writeKeyframe(text, view, keyframe.time, value, keyframe.interpolationData);
        text += QLatin1Char('\n');
    }
    if (track.keyframes.isEmpty()) {
        const bool omits = mayOmitView && view == View(View::defaultViewId());
        addStaticValue(text, omits ? start : start + view.toString(), track.staticValue);
    }
}

inline void addViewList(QString& text, const QString& start, const std::vector<View>& views) {
    QString list(QLatin1Char('['));
    for (const View view : views) {
        list += QString::number(view.id());
        if (view != views.back())
            list += QLatin1String(", ");
    }
    addLine(text, start, ParameterStrings::views, list + QLatin1Char(']'));
}

inline void send(QTextStream& stream, const QString& text) {
    const PlainNumbers plain(stream);
    stream << text << Qt::flush;
}

} // namespace detail

template <class T> bool Parameter<T>::bStreamOut(QTextStream& stream, const QString& prefix, bool withName) const {
    const QString start = detail::lineStart(prefix, scriptName(), withName);
    QString text;
    const std::vector<View> views = viewList();
    const bool onlyDefaultView = views.size() == 1 && views.front() == View(View::defaultViewId());
    const bool omitsView = onlyDefaultView && writtenTrack(views.front()).keyframes.isEmpty();
    if (!omitsView)
        detail::addViewList(text, start, views);
    for (const View view : views)
        detail::addTrack(text, start, view, writtenTrack(view), omitsView);
    for (const View view : views) {
        const detail::Track<T> track = writtenTrack(view);
        if (!track.keyframes.isEmpty())
            detail::addStaticValue(text, start + view.toString(), track.staticValue);
    }
    writeHidden(text, start);
    if (isKeyframed()) {
        detail::addLine(text, start, ParameterStrings::before, qstrExtrapolationTypeString(m_extrapolationBefore));
        detail::addLine(text, start, ParameterStrings::after, qstrExtrapolationTypeString(m_extrapolationAfter));
    }
    writeMaster(text, start);
    detail::send(stream, text);
    return true;
}

/// The data of a view, without keyframes where the parameter is not keyframed.
template <class T> detail::Track<T> Parameter<T>::writtenTrack(const View& view) const {
    const PVData& data = m_views.resolve(view);
    return {data.staticValue, isKeyframed() ? data.keyframes : KeyframeVector()};
}

template <class T>
void Parameter<T>::writeSingleViewValues(QTextStream& stream, const QString& prefix, const View& view,
                                         bool forceViewPrefix) const {
    QString text;
    detail::addTrack(text, prefix, view, writtenTrack(view), !forceViewPrefix);
    detail::send(stream, text);
}

template <class T>
void Parameter<T>::writeStaticValue(QTextStream& stream, const QString& prefix, const View& view) const {
    QString text;
    detail::addStaticValue(text, prefix + view.toString(), m_views.resolve(view).staticValue);
    detail::send(stream, text);
}

/// The import of a line's keyframe in one step, which makes reading a project twice as fast.
template <class T> class Parameter<T>::KeyframeImport {
public:
    explicit KeyframeImport(Parameter& parameter) : m_parameter(parameter) {}

    /// Whether no change of the keyframe is emitted, and no class of a host implements a step.
    bool isPossible() const {
        return !m_parameter.emits(ParameterChange::KEYFRAME_ADDED) &&
               !m_parameter.emits(ParameterChange::KEYFRAME_CHANGED_VALUE) &&
               !m_parameter.emits(ParameterChange::KEYFRAME_CHANGED_INTERPOLATION) &&
               !HookGate::overrides(m_parameter, &Parameter::importKeyframe) &&
               !HookGate::overrides(m_parameter, &Parameter::vSetValue) &&
               !HookGate::overrides(m_parameter, &Parameter::vSetInterpolation) &&
               !HookGate::overrides(m_parameter, &Parameter::vSetInterpolationData) &&
               !HookGate::overrides(m_parameter, &Parameter::initialiseInterpolation);
    }

    void store(const KeyframeData<T>& keyframe, const View& view) const {
        PVData* const data = m_parameter.targetData(view);
        if (!data)
            return;
        if (!m_parameter.isKeyframed() || !keyframe.time.isValid()) {
            detail::storeStaticValue(*data, keyframe.value);
            return;
        }
        m_parameter.countChange(ParameterChange::KEYFRAME_CHANGED_VALUE);
        detail::InsertionPlace place(data->keyframes, keyframe.time, keyframe.interpolationData.interpolation,
                                     m_parameter.isReadingIn());
        if (place.isTaken)
            replace(*data, place.position, keyframe);
        else
            insert(*data, place, keyframe);
    }

private:
    void insert(PVData& data, detail::InsertionPlace& place, const KeyframeData<T>& keyframe) const {
        if (place.shaped == place.position)
            place.shaped = -1;
        m_parameter.insertAt(place, data, keyframe, [this](const KeyframeData<T>& from, const KeyframeData<T>& to) {
            return m_parameter.initialiseInterpolation(from, to, from.interpolationData.interpolation);
        });
    }
    static void replace(PVData& data, int position, const KeyframeData<T>& keyframe) {
        LockedKeyframes lock(&data);
        KeyframeData<T>& stored = lock.keyframes()[position];
        if (!ValueType<T>::equal(stored.value, keyframe.value))
            stored.value = keyframe.value;
        stored.interpolationData = keyframe.interpolationData;
    }

    Parameter& m_parameter;
};

/// Reads one line into a parameter: one function for each kind of line, false where it is of another kind.
template <class T> class Parameter<T>::LineReading {
public:
    LineReading(Parameter& parameter, const ProjectFileVersion& version, const TextConversion& convert)
        : m_parameter(parameter), m_resetsViews(version.streamVersion >= StreamVersion::anyViewList),
          m_convert(convert) {}

    bool read(QStringView line) {
        if (readViewList(line))
            return true;
        View view;
        QStringView unprefixed = line;
        const bool prefixed = View::extractStringPrefix(unprefixed, view);
        if (readKeyframe(unprefixed, view))
            return true;
        const QString rest = unprefixed.toString();
        return readStaticValue(rest, view, prefixed) || m_parameter.readHidden(rest) ||
               detail::hasKey(rest, ParameterStrings::isKeyframed) || readExtrapolation(rest) ||
               m_parameter.readMaster(rest);
    }

private:
    bool readViewList(QStringView line) {
        if (!detail::beginsWith(line, ParameterStrings::views))
            return false;
        if (!m_resetsViews)
            return true;
        const View defaultView;
        const std::vector<View> views = detail::parseViewList(line.toString());
        intoNewViews([&] {
            const detail::LifeGuard guard(m_parameter);
            for (const View view : views) {
                if (!guard.alive())
                    return;
                m_parameter.targetData(view);
            }
            if (guard.alive() && m_parameter.splittable() &&
                std::find(views.begin(), views.end(), defaultView) == views.end())
                m_parameter.deleteView(defaultView);
        });
        return true;
    }

    bool readKeyframe(QStringView line, View view) {
        if (!detail::hasKey(line, ParameterStrings::keyframes))
            return false;
        TypedSerialisedKeyframe keyframe;
        keyframe.view = view;
        keyframe.valueMapper = m_convert;
        keyframe.setFromText(line);
        if (!m_parameter.isKeyframed())
            detail::LineNotes::addLoss("keyframe of a parameter that is not animated");
        intoView(view, [&] {
            if (const KeyframeImport import(m_parameter); import.isPossible())
                import.store({keyframe.time, keyframe.value, keyframe.itype}, keyframe.view);
            else
                m_parameter.importKeyframe(keyframe);
        });
        return true;
    }

    bool readStaticValue(const QString& line, View view, bool prefixed) {
        if (!detail::hasKey(line, ParameterStrings::value))
            return false;
        const QString text = detail::textAfter(line);
        const T value = ValueType<T>::read(m_convert ? m_convert(text) : text);
        const auto store = [&] {
            if (PVData* const data = m_parameter.targetData(view))
                detail::storeStaticValue(*data, value);
        };
        if (prefixed || !m_resetsViews)
            intoView(view, store);
        else
            intoNewViews(store);
        return true;
    }

    bool readExtrapolation(const QString& line) {
        const bool after = detail::hasKey(line, ParameterStrings::after);
        if (!after && !detail::hasKey(line, ParameterStrings::before))
            return false;
        Extrapolation kind{};
        const QString name = detail::textBetween(line);
        if (bStringToExtrapolationType(name, kind))
            (after ? m_parameter.m_extrapolationAfter : m_parameter.m_extrapolationBefore).store(kind);
        else
            detail::LineNotes::addLoss("extrapolation", name, "is not known");
        return true;
    }

    /// Begins with no views; where that throws all are as they were.
    template <class Change> void intoNewViews(const Change& change) {
        const FastViewMap former(m_parameter.m_views, T());
        const detail::LifeGuard guard(m_parameter);
        const auto renew = [&] {
            m_parameter.clearViewData();
            if (guard.alive())
                change();
        };
        detail::changeOrGoBack(m_parameter, renew, [&] {
            m_parameter.m_views.assignViews(former, [&] { m_parameter.m_isSplit.store(former.count() > 1); });
            ++m_parameter.m_revision;
        });
    }

    /// Where that throws, a view that it has begun is taken away again.
    template <class Change> void intoView(const View& view, const Change& change) {
        const View target = m_parameter.splittable() ? view : View(View::defaultViewId());
        if (target != view)
            detail::LineNotes::addLoss("view of a parameter that has one view only");
        if (m_parameter.m_views.findRealViewData(target)) {
            change();
            return;
        }
        const bool hadNone = m_parameter.m_views.count() == 0;
        detail::changeOrGoBack(m_parameter, change, [&] {
            if (hadNone)
                m_parameter.Parameter::clearViewData();
            else
                m_parameter.Parameter::deleteView(target);
        });
    }

    Parameter& m_parameter;
    const bool m_resetsViews;
    const TextConversion& m_convert;
};

template <class T>
bool Parameter<T>::streamInValue(const QString& line, const ProjectFileVersion& version, TextConversion convert) {
    // A copy: observers may change the caller's text. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const QString whole = line;
    const ReadingScope reading(*this);
    return LineReading(*this, version, convert).read(whole);
}

/// The same, without a copy of the text.
template <class T>
bool Parameter<T>::readRest(QStringView rest, const ProjectFileVersion& version, const TextConversion& convert) {
    if (HookGate::overrides(*this, &Parameter::streamInValue))
        return ParameterWithoutType::readRest(rest, version, convert);
    const ReadingScope reading(*this);
    return LineReading(*this, version, convert).read(rest);
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
    // Copies: observers of the first change may delete the original.
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
