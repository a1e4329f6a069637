#include "tool/exchange/StyleSheet.h"

#include "prm/ParameterWithoutType.h"
#include "tool/Table.h"

#include <QPointF>

#include <algorithm>
#include <set>

namespace Tool {

namespace {

QByteArray text(double number) {
    return plainText(number).toLatin1();
}

/// A name as style sheets have them: letters, digits, "-" and "_", not beginning with a digit.
QByteArray nameOf(const QString& path) {
    QByteArray name;
    for (const QChar c : path) {
        const ushort code = c.unicode();
        const bool isPlain = code < 0x80 && (std::isalnum(code) != 0 || code == '_');
        name += isPlain || code >= 0x80 ? QString(c).toUtf8() : QByteArray("-");
    }
    return std::isdigit(static_cast<unsigned char>(name.at(0))) != 0 ? '_' + name : name;
}

struct Component {
    QByteArray property;
    QVector<double> values;
};

std::vector<Component> componentsOf(const QByteArray& name, const QVector<QVariant>& values) {
    const bool isPoint = values.front().userType() == QMetaType::QPointF;
    std::vector<Component> components;
    if (!isPoint) {
        components.push_back({"--" + name, {}});
        for (const QVariant& value : values)
            components.front().values.append(value.toDouble());
        return components;
    }
    components = {{"--" + name + "-x", {}}, {"--" + name + "-y", {}}};
    for (const QVariant& value : values) {
        components[0].values.append(value.toPointF().x());
        components[1].values.append(value.toPointF().y());
    }
    return components;
}

QByteArray easing(const Prm::IType& shape) {
    const auto within = [](double x) { return text(std::clamp(x, 0.0, 1.0)); };
    switch (shape.interpolation) {
    case Prm::Interpolation::Constant:
        return "steps(1, end)";
    case Prm::Interpolation::Bezier:
        return "cubic-bezier(" + within(shape.x1) + ", " + text(shape.y1) + ", " + within(shape.x2) + ", " +
               text(shape.y2) + ')';
    default:
        return "linear";
    }
}

QByteArray declarations(const std::vector<Component>& components, int index) {
    QByteArray all;
    for (const Component& component : components)
        all += ' ' + component.property + ": " + text(component.values[index]) + ';';
    return all;
}

/// One parameter, as it is in a view.
class Rules {
public:
    Rules(const QString& path, const Prm::ParameterWithoutType& parameter, Prm::View view, double framesPerSecond)
        : m_path(path), m_parameter(parameter), m_view(view), m_framesPerSecond(framesPerSecond), m_name(nameOf(path)) {
        for (unsigned int i = 0; i < parameter.keyframeCount(view); ++i)
            m_times.append(parameter.keyframeTime(i, view).time);
    }

    const QByteArray& name() const { return m_name; }

    QByteArray written() const {
        QVector<QVariant> values;
        for (const Prm::Time time : m_times)
            values.append(m_parameter.variantValue({time, m_view}));
        if (values.isEmpty())
            values.append(m_parameter.variantValue({Prm::Time::fromInt(0), m_view}));
        const std::vector<Component> components = componentsOf(m_name, values);
        QByteArray rules = "/* " + m_path.toUtf8().replace("*/", "* /") + " */\n";
        for (const Component& component : components)
            rules += "@property " + component.property +
                     " { syntax: \"<number>\"; inherits: false; initial-value: " + text(component.values.front()) +
                     "; }\n";
        if (m_times.size() < 2)
            return rules + '.' + m_name + " {" + declarations(components, 0) + " }\n";
        return rules + keyframes(components) + animation();
    }

    QString losses() const {
        QStringList lost;
        const auto isConstant = [](Prm::Extrapolation kind) { return kind == Prm::Extrapolation::Constant; };
        int custom = 0;
        for (int i = 0; i + 1 < m_times.size(); ++i)
            custom += shape(i).interpolation >= Prm::Interpolation::Custom0 ? 1 : 0;
        if (custom > 0)
            lost += message("custom segments become straight: %1", custom);
        if (!m_times.isEmpty() &&
            (!isConstant(m_parameter.extrapolationBefore()) || !isConstant(m_parameter.extrapolationAfter())))
            lost += "it is held before and after its keyframes";
        return lost.isEmpty() ? QString() : message("%1: %2", m_path, lost.join("; "));
    }

private:
    Prm::IType shape(int index) const {
        return m_parameter.interpolationData({&m_parameter, m_view, static_cast<quint32>(index)});
    }

    double length() const { return m_times.last() - m_times.first(); }

    QByteArray keyframes(const std::vector<Component>& components) const {
        QByteArray rule = "@keyframes " + m_name + " {\n";
        for (int i = 0; i < m_times.size(); ++i) {
            const bool isLast = i + 1 == m_times.size();
            const double part = isLast ? 1 : (m_times[i] - m_times.first()) / length();
            rule += "    " + text(part * 100) + "% {" + declarations(components, i);
            if (!isLast)
                rule += " animation-timing-function: " + easing(shape(i)) + ';';
            rule += " }\n";
        }
        return rule + "}\n";
    }

    QByteArray animation() const {
        return '.' + m_name + " { animation: " + m_name + ' ' + text(length() / m_framesPerSecond) + "s linear " +
               text(m_times.first().toDouble() / m_framesPerSecond) + "s both; }\n";
    }

    const QString m_path;
    const Prm::ParameterWithoutType& m_parameter;
    const Prm::View m_view;
    const double m_framesPerSecond;
    const QByteArray m_name;
    QVector<Prm::Time> m_times;
};

} // namespace

StyleSheet styleSheet(Project& project, const std::vector<int>& nodes, Prm::View view, double framesPerSecond) {
    StyleSheet sheet;
    std::set<QByteArray> names;
    TextBudget budget;
    project.forEach(nodes, "writing", [&](const FileParameter& parameter) {
        const bool isText = parameter.kind() == &ValueKind::text;
        if (isText)
            sheet.losses += message("%1: texts are left out", parameter.path());
        else if (!canBeEvaluated(parameter))
            sheet.isComplete = false;
        if (isText || parameter.kind() == &ValueKind::opaque)
            return;
        const TypedParameter shown = project.kinds().shown(parameter);
        const Rules rules(parameter.path(), *shown.parameter, view, framesPerSecond);
        if (!names.insert(rules.name()).second)
            throw Problem("%1: another parameter is called %2 in a style sheet, too", parameter.path(),
                          QString::fromUtf8(rules.name()));
        const QByteArray written = rules.written();
        budget.spend(written.size());
        sheet.text += written;
        const QString losses = rules.losses();
        if (!losses.isEmpty())
            sheet.losses += losses;
    });
    return sheet;
}

} // namespace Tool
