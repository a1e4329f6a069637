#pragma once

#include <QHash>
#include <QString>
#include <QStringView>

namespace Prm {

class BasicParameter;
class ParameterSet;

namespace detail {

/// The members below a set by the paths that their lines begin with: what would become of a line, without reading it.
class MemberPaths {
public:
    /// `Named`: a parameter has the name, but such a line is none of its own. `Read`: it would be read.
    enum class Match { None, Named, Read };

    explicit MemberPaths(const ParameterSet& root);

    Match match(const QString& line) const;

private:
    struct Member {
        const BasicParameter* parameter = nullptr;
        bool isSet = false;
    };

    void collect(const ParameterSet& set, QString& start);
    void add(const QString& path, const BasicParameter& parameter);
    static Match match(const Member& member, QStringView rest);
    static bool reads(const BasicParameter& parameter, QStringView rest);

    QHash<QString, Member> m_members;
    int m_longest = 0;
};

} // namespace detail

} // namespace Prm
