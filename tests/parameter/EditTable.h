#pragma once

#include "tests/parameter/Keying.h"

#include <QStringList>

#include <functional>
#include <map>
#include <memory>

/// "view(static value) time=value ...; view ..." for the views with data; a static value of 0 is left out.
QString text(const Prm::Parameter<int>& parameter);
/// Makes it so; first, `options` are letters: keyframed, splittable, and default value 6 once the data are there.
std::unique_ptr<Prm::Parameter<int>> made(const QString& options, const QString& state);

/// The changes sent meanwhile: "TYPE[index][@view][time]" each, types without KEYFRAME_, PARAMETER_ and CHANGED_ in
/// front, view 0 left out, the time of removed keyframes only.
QString changesDuring(Prm::ParameterWithoutType& parameter, const std::function<void()>& act);

/// The words of an edit; a context is written "time@view", its time "-" for the static value.
struct Words : QStringList {
    using QStringList::QStringList;
    int number(int i) const { return value(i).toInt(); }
    Prm::View view(int i) const { return Prm::View(static_cast<quint32>(number(i))); }
    Prm::Context context(int i) const;
};

/// What a word does to a parameter, and the answer ("=1 "), if it has one.
struct Verb {
    template <class Act>
    Verb(Act act)
        : run([act](Prm::Parameter<int>& parameter, const Words& words) {
              if constexpr (std::is_void_v<std::invoke_result_t<Act, Prm::Parameter<int>&, const Words&>>)
                  return act(parameter, words), QString();
              else
                  return QStringLiteral("=%1 ").arg(static_cast<int>(act(parameter, words)));
          }) {}
    std::function<QString(Prm::Parameter<int>&, const Words&)> run;
};
using Verbs = std::map<QString, Verb>;

/// Each line "name | options | data before | edit | answer and changes | data after" (= for the same) holds; and with
/// observers that at each of the changes delete the parameter, throw, change views, call back or assign, the edit stays
/// safe and leaves a sound parameter behind.
void checkEdits(const Verbs& verbs, const char* table);
