#pragma once

#include <QHash>
#include <QString>
#include <QStringView>

namespace Prm {

class BasicParameter;
class ParameterSet;

namespace detail {

/// The members below a set by the paths that their lines begin with: what would become of a line, without reading it.
/// A copy, which stays valid when members are removed.
class MemberPaths {
public:
    /// `Named`: a parameter has the name, but such a line is none of its own. `Read`: it would be read.
    enum class Match { None, Named, Read };

    explicit MemberPaths(const ParameterSet& root);

    Match match(const QString& line) const;

private:
    /// What is at a path; a set and a parameter may share one. `Other`: moved parameters, and kinds of a host's own.
    enum Kind : quint8 { Set = 1, Animated = 2, Compound = 4, Static = 8, Other = 16 };

    void collect(const ParameterSet& set, const QString& start);
    void add(const QString& path, Kind kind);
    static Kind kindOf(const BasicParameter& parameter);
    static bool reads(quint8 kinds, QStringView rest);

    QHash<QString, quint8> m_kinds;
    int m_longest = 0;
};

} // namespace detail

} // namespace Prm
