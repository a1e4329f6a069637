#pragma once

#include "host/bsc/Hash.h"
#include "prm/Export.h"
#include "prm/TextStreamOperators.h"

#include <QPoint>
#include <QPointF>
#include <QString>
#include <QTextStream>
#include <QVariant>

#include <array>
#include <type_traits>

namespace Prm {

template <class T> struct ValueType;

namespace detail {

/// Adds a text's length and its bytes in UTF-8, so that two texts in a row differ from two others with the same joined
/// text.
PRM_EXPORT void addTextToHash(Bsc::Hash& hash, const QString& text);

} // namespace detail

/// The general implementation of `ValueType<T>`, from which specialisations derive: T's `==`, its text stream
/// operators, and its `QVariant` conversions (T must be declared with Q_DECLARE_METATYPE).
///
/// \snippet own_value_type.cpp type
/// \threads Safe on any thread; the functions of a specialisation must be, too. Values are copied and destroyed on
/// several threads, which must not evaluate or edit a parameter.
template <class T> struct GeneralValueType {
    /// The name in "Prm::Parameter<name>", the name of the parameter's meta-type.
    static QString name() { return QString::fromLatin1(QMetaType::typeName(qMetaTypeId<T>())); }

    /// Must be exact: setting a value that is equal to the present one does nothing.
    static bool equal(const T& a, const T& b) { return a == b; }

    /// Appends the value's text, without a line break and in the C locale.
    static void write(QString& text, const T& value) {
        QTextStream stream(&text, QIODevice::WriteOnly | QIODevice::Append);
        stream << value;
    }
    /// Reads what `write` appended. For other text, the result is that of the stream operator.
    static T read(const QString& text) {
        QString copy = text;
        QTextStream stream(&copy, QIODevice::ReadOnly);
        T value{};
        stream >> value;
        return value;
    }

    /// The value in T's own meta-type.
    static QVariant toVariant(const T& value) { return QVariant::fromValue(value); }
    /// A variant that does not convert gives `T()`.
    static T fromVariant(const QVariant& variant) {
        const int type = qMetaTypeId<T>();
        if (variant.userType() == type)
            return *static_cast<const T*>(variant.constData());
        QVariant converted = variant;
        if (!converted.convert(type))
            return T{};
        return *static_cast<const T*>(converted.constData());
    }

    /// Adds bytes that are the same on every machine and differ between values: here the length of the written text and
    /// the text. Values of different lengths must add their length, too.
    static void addToHash(Bsc::Hash& hash, const T& value) {
        QString text;
        ValueType<T>::write(text, value);
        detail::addTextToHash(hash, text);
    }
};

/// What the library needs to know of the values of a parameter. A host specialises it for a type of its own, normally
/// derived from `GeneralValueType`, and replaces what differs. For a type that blends, so that it can have curves, the
/// specialisation adds:
///
///     static constexpr int componentCount;                    // the number of components of a value
///     static double component(const T& value, int i);         // the i-th component
///     static T fromComponents(const double* components);      // the value with these components
///
/// \snippet own_value_type.cpp type
template <class T> struct ValueType : GeneralValueType<T> {};

namespace detail {

template <class T, class = void> struct Blends : std::false_type {};
template <class T> struct Blends<T, std::void_t<decltype(ValueType<T>::componentCount)>> : std::true_type {};

} // namespace detail

/// Whether values of the type can be blended.
template <class T> inline constexpr bool blends = detail::Blends<T>::value;

/// Whether copying and comparing values calls no function of a host.
template <class T> inline constexpr bool isPlain = std::is_arithmetic_v<T> || std::is_same_v<T, QPointF>;

namespace detail {

/// Adds up values of a type that blends.
template <class T> class WeightedSum {
public:
    void add(const T& value, double weight) {
        for (int i = 0; i < ValueType<T>::componentCount; ++i)
            m_sum[static_cast<std::size_t>(i)] += weight * ValueType<T>::component(value, i);
    }
    T value() const { return ValueType<T>::fromComponents(m_sum.data()); }

private:
    std::array<double, static_cast<std::size_t>(ValueType<T>::componentCount)> m_sum{};
};

} // namespace detail

/// Booleans; they do not blend.
template <> struct PRM_EXPORT ValueType<bool> : GeneralValueType<bool> {
    /// The integer 1 or 0.
    static void write(QString& text, const bool& value);
    /// Reads an integer as the stream operator does, "0x10" and "0b11" included; all except 0 are true.
    static bool read(const QString& text);
    static void addToHash(Bsc::Hash& hash, const bool& value);
};

/// Whole numbers; they blend, and the result is rounded.
template <> struct PRM_EXPORT ValueType<int> : GeneralValueType<int> {
    static void write(QString& text, const int& value);
    static int read(const QString& text);
    static constexpr int componentCount = 1;
    static double component(const int& value, int) { return value; }
    /// Rounded half away from zero and clamped to the type's range; NaN gives 0.
    static int fromComponents(const double* components);
    static int fromVariant(const QVariant& variant);
    static void addToHash(Bsc::Hash& hash, const int& value);
};

/// Whole numbers from 0 on; they blend, and the result is rounded.
template <> struct PRM_EXPORT ValueType<unsigned int> : GeneralValueType<unsigned int> {
    static void write(QString& text, const unsigned int& value);
    static unsigned int read(const QString& text);
    static constexpr int componentCount = 1;
    static double component(const unsigned int& value, int) { return value; }
    /// Rounded half away from zero and clamped to the type's range; NaN gives 0.
    static unsigned int fromComponents(const double* components);
    static unsigned int fromVariant(const QVariant& variant);
    static void addToHash(Bsc::Hash& hash, const unsigned int& value);
};

/// Numbers; they blend.
template <> struct PRM_EXPORT ValueType<double> : GeneralValueType<double> {
    /// NaN equals NaN; otherwise setting it would be a change every time.
    static bool equal(const double& a, const double& b);
    /// The shortest text that reads back as the same number.
    static void write(QString& text, const double& value);
    static double read(const QString& text);
    static constexpr int componentCount = 1;
    static double component(const double& value, int) { return value; }
    static double fromComponents(const double* components) { return components[0]; }
    static void addToHash(Bsc::Hash& hash, const double& value);
};

/// Texts; they do not blend.
template <> struct PRM_EXPORT ValueType<QString> : GeneralValueType<QString> {
    /// Between double quotes, escaped.
    static void write(QString& text, const QString& value);
    static QString read(const QString& text);
    static void addToHash(Bsc::Hash& hash, const QString& value);
};

/// Points; each coordinate blends.
template <> struct PRM_EXPORT ValueType<QPointF> : GeneralValueType<QPointF> {
    /// Exact, unlike QPointF's own comparison.
    static bool equal(const QPointF& a, const QPointF& b);
    /// x, a blank, and y, each as the shortest text that reads back as the same number.
    static void write(QString& text, const QPointF& value);
    static QPointF read(const QString& text);
    static constexpr int componentCount = 2;
    static double component(const QPointF& value, int i) { return i == 0 ? value.x() : value.y(); }
    static QPointF fromComponents(const double* components) { return {components[0], components[1]}; }
    static void addToHash(Bsc::Hash& hash, const QPointF& value);
};

/// Points of whole numbers; they do not blend.
template <> struct PRM_EXPORT ValueType<QPoint> : GeneralValueType<QPoint> {
    /// x, a blank, and y.
    static void write(QString& text, const QPoint& value);
    static QPoint read(const QString& text);
    static void addToHash(Bsc::Hash& hash, const QPoint& value);
};

} // namespace Prm
