#include "prm/exchange/StyleSheet.h"

#include "prm/ParameterWithoutType.h"
#include "prm/document/Budget.h"
#include "prm/document/Problem.h"
#include "prm/document/ValueText.h"
#include "prm/exchange/HeldShapes.h"

#include <QPointF>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace Prm::document {

namespace {

QByteArray text(double number) {
    return plainText(number).toLatin1();
}

/// What means something else in its place, whatever its case.
bool isReserved(const QByteArray& name) {
    static const std::set<QByteArray> words{"none",
                                            "initial",
                                            "inherit",
                                            "unset",
                                            "revert",
                                            "revert-layer",
                                            "default",
                                            "auto",
                                            "infinite",
                                            "normal",
                                            "reverse",
                                            "alternate",
                                            "alternate-reverse",
                                            "forwards",
                                            "backwards",
                                            "both",
                                            "running",
                                            "paused",
                                            "linear",
                                            "ease",
                                            "ease-in",
                                            "ease-out",
                                            "ease-in-out",
                                            "step-start",
                                            "step-end",
                                            "replace",
                                            "add",
                                            "accumulate"};
    return words.count(name.toLower()) != 0;
}

/// A name as style sheets have them: letters, digits, "-" and "_", not beginning as a number does.
QByteArray nameOf(const QString& path) {
    QByteArray name;
    for (const uint code : path.toUcs4()) {
        const bool isPlain = QChar::isLetterOrNumber(code) || QChar::isMark(code) || code == '_';
        name += isPlain ? QString::fromUcs4(&code, 1).toUtf8() : QByteArray("-");
    }
    const int first = name.startsWith('-') ? 1 : 0;
    const bool isNumber = first == name.size() || std::isdigit(static_cast<unsigned char>(name.at(first))) != 0;
    return isNumber || isReserved(name) ? '_' + name : name;
}

struct Component {
    QByteArray property;
    QVector<double> values;
};

/// The names of the custom properties.
std::vector<QByteArray> propertiesOf(const QByteArray& name, bool isPoint) {
    if (isPoint)
        return {"--" + name + "-x", "--" + name + "-y"};
    return {"--" + name};
}

bool isPoint(const QVariant& value) {
    return value.userType() == QMetaType::QPointF;
}

std::vector<Component> componentsOf(const QByteArray& name, const QVector<QVariant>& values) {
    std::vector<Component> components;
    for (const QByteArray& property : propertiesOf(name, isPoint(values.front())))
        components.push_back({property, {}});
    for (const QVariant& value : values) {
        const bool hasTwo = components.size() == 2;
        components.front().values.append(hasTwo ? value.toPointF().x() : value.toDouble());
        if (hasTwo)
            components.back().values.append(value.toPointF().y());
    }
    return components;
}

/// Names that have been given, of classes, keyframes and properties.
class Names {
public:
    /// A name that nothing else has, made of the path, with a number where that is needed.
    QByteArray take(const QString& path, bool isPoint) {
        const QByteArray wanted = nameOf(path);
        QByteArray name = wanted;
        for (int& count = m_counts[wanted]; !isFree(name, isPoint);)
            name = wanted + '-' + QByteArray::number(++count + 1);
        m_taken.insert(name);
        for (const QByteArray& property : propertiesOf(name, isPoint))
            m_taken.insert(property);
        return name;
    }

private:
    bool isFree(const QByteArray& name, bool isPoint) const {
        const std::vector<QByteArray> properties = propertiesOf(name, isPoint);
        return m_taken.count(name) == 0 && std::none_of(properties.begin(), properties.end(),
                                                        [this](const auto& each) { return m_taken.count(each) != 0; });
    }

    std::set<QByteArray> m_taken;
    /// How often a name was asked for again.
    std::map<QByteArray, int> m_counts;
};

QByteArray easing(const IType& shape) {
    switch (shape.interpolation) {
    case Interpolation::Constant:
        return "steps(1, end)";
    case Interpolation::Bezier:
        return "cubic-bezier(" + text(shape.x1) + ", " + text(shape.y1) + ", " + text(shape.x2) + ", " +
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

bool isFinite(const QVariant& value) {
    const QPointF point = isPoint(value) ? value.toPointF() : QPointF(value.toDouble(), 0);
    return std::isfinite(point.x()) && std::isfinite(point.y());
}

/// One parameter, as it is in a view.
class Rules {
public:
    Rules(const QString& path, const ParameterWithoutType& parameter, View view, double framesPerSecond)
        : m_path(path), m_framesPerSecond(framesPerSecond) {
        for (unsigned int i = 0; i < parameter.keyframeCount(view); ++i)
            m_times.append(parameter.keyframeTime(i, view).time);
        for (const Time time : m_times)
            m_values.append(parameter.variantValue({time, view}));
        if (m_values.isEmpty())
            m_values.append(parameter.variantValue({Time::fromInt(0), view}));
        readShapes(parameter, view);
    }

    bool isFinite() const { return std::all_of(m_values.begin(), m_values.end(), document::isFinite); }

    /// The rules, and the name in them.
    QByteArray written(Names& names) {
        m_name = names.take(m_path, isPoint(m_values.front()));
        if (m_name != nameOf(m_path))
            m_lost += message("its name is %1, because another parameter has %2", QString::fromUtf8(m_name),
                              QString::fromUtf8(nameOf(m_path)));
        const std::vector<Component> components = componentsOf(m_name, m_values);
        QByteArray rules = "/* " + m_path.toUtf8().replace("*/", "* /") + " */\n";
        for (const Component& component : components)
            rules += "@property " + component.property +
                     " { syntax: \"<number>\"; inherits: false; initial-value: " + text(component.values.front()) +
                     "; }\n";
        if (m_times.size() < 2)
            return rules + '.' + m_name + " {" + declarations(components, 0) + " }\n";
        return rules + keyframes(components) + animation();
    }

    QString losses() const { return m_lost.isEmpty() ? QString() : message("%1: %2", m_path, m_lost.join("; ")); }

private:
    void readShapes(const ParameterWithoutType& parameter, View view) {
        const bool isSwitch = m_values.front().userType() == QMetaType::Bool;
        HeldShapes shapes;
        for (int i = 0; i + 1 < m_times.size(); ++i) {
            const IType shape = parameter.interpolationData({&parameter, view, static_cast<quint32>(i)});
            m_shapes.append(isSwitch ? IType(Interpolation::Constant) : shapes.held(shape));
        }
        m_lost = shapes.losses();
        const auto isConstant = [](Extrapolation kind) { return kind == Extrapolation::Constant; };
        if (!m_times.isEmpty() &&
            (!isConstant(parameter.extrapolationBefore()) || !isConstant(parameter.extrapolationAfter())))
            m_lost += "it is held before and after its keyframes";
    }

    double length() const { return m_times.last() - m_times.first(); }

    QByteArray keyframes(const std::vector<Component>& components) const {
        QByteArray rule = "@keyframes " + m_name + " {\n";
        for (int i = 0; i < m_times.size(); ++i) {
            const bool isLast = i + 1 == m_times.size();
            const double part = isLast ? 1 : (m_times[i] - m_times.first()) / length();
            rule += "    " + text(part * 100) + "% {" + declarations(components, i);
            if (!isLast)
                rule += " animation-timing-function: " + easing(m_shapes[i]) + ';';
            rule += " }\n";
        }
        return rule + "}\n";
    }

    QByteArray animation() const {
        return '.' + m_name + " { animation: " + m_name + ' ' + text(length() / m_framesPerSecond) + "s linear " +
               text(m_times.first().toDouble() / m_framesPerSecond) + "s both; }\n";
    }

    const QString m_path;
    const double m_framesPerSecond;
    QByteArray m_name;
    QVector<Time> m_times;
    QVector<QVariant> m_values;
    QVector<IType> m_shapes;
    QStringList m_lost;
};

} // namespace

StyleSheet styleSheet(Document& document, const std::vector<int>& nodes, View view, double framesPerSecond) {
    StyleSheet sheet;
    Names names;
    TextBudget budget;
    document.forEach(nodes, "writing", [&](const FileParameter& parameter) {
        const bool isText = parameter.kind() == &ValueKind::text;
        const Evaluability found = isText ? Evaluability{true, {}, {}} : evaluability(parameter);
        if (isText)
            sheet.losses += message("%1: texts are left out", parameter.path());
        if (!found.note.isEmpty())
            sheet.notes.push_back(found);
        sheet.isComplete = sheet.isComplete && found.isGiven;
        if (isText || parameter.kind() == &ValueKind::opaque)
            return;
        const TypedParameter shown = document.kinds.shown(parameter);
        Rules rules(parameter.path(), *shown.parameter, shown.viewWithData(view), framesPerSecond);
        if (!rules.isFinite()) {
            sheet.losses += message("%1: left out, because style sheets have no infinite values", parameter.path());
            return;
        }
        const QByteArray written = rules.written(names);
        budget.spend(written.size());
        sheet.text += written;
        const QString losses = rules.losses();
        if (!losses.isEmpty())
            sheet.losses += losses;
    });
    return sheet;
}

} // namespace Prm::document
