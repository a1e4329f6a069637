#pragma once

#include <QLocale>
#include <QTextStream>

namespace Prm::detail {

/// Gives a text stream its default number format and the C locale for a scope, whatever its owner has set, so that
/// project text never depends on the settings of the stream that it goes through.
class PlainNumbers {
public:
    explicit PlainNumbers(QTextStream& stream)
        : m_stream(stream), m_locale(stream.locale()), m_flags(stream.numberFlags()),
          m_notation(stream.realNumberNotation()), m_precision(stream.realNumberPrecision()),
          m_base(stream.integerBase()), m_width(stream.fieldWidth()) {
        apply(QLocale::c(), {}, QTextStream::SmartNotation, 6, 0, 0);
    }
    ~PlainNumbers() { apply(m_locale, m_flags, m_notation, m_precision, m_base, m_width); }
    Q_DISABLE_COPY(PlainNumbers)

private:
    void apply(const QLocale& locale, QTextStream::NumberFlags flags, QTextStream::RealNumberNotation notation,
               int precision, int base, int width) {
        m_stream.setLocale(locale);
        m_stream.setNumberFlags(flags);
        m_stream.setRealNumberNotation(notation);
        m_stream.setRealNumberPrecision(precision);
        m_stream.setIntegerBase(base);
        m_stream.setFieldWidth(width);
    }

    QTextStream& m_stream;
    QLocale m_locale;
    QTextStream::NumberFlags m_flags;
    QTextStream::RealNumberNotation m_notation;
    int m_precision;
    int m_base;
    int m_width;
};

} // namespace Prm::detail
