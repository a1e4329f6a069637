#include "prm/exchange/Json.h"

#include "prm/ValueType.h"

#include <algorithm>
#include <cmath>

namespace Prm::document {

namespace {

QByteArray escaped(ushort unit) {
    return "\\u" + QByteArray::number(unit, 16).rightJustified(4, '0');
}

QByteArray quoted(const QString& text) {
    QByteArray json("\"");
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            json += text.mid(i++, 2).toUtf8();
        else if (c < ' ' || c.unicode() == 0x7F || c.isSurrogate())
            json += escaped(c.unicode());
        else if (c == '"' || c == '\\')
            json += '\\' + QByteArray(1, c.toLatin1());
        else
            json += QString(c).toUtf8();
    }
    return json + '"';
}

} // namespace

void appendJson(QByteArray& text, double number) {
    // Readers take -0 as a whole number, which has no sign.
    if (number == 0 && std::signbit(number)) {
        text += "-0.0";
        return;
    }
    QString digits;
    ValueType<double>::write(digits, number);
    text += digits.toLatin1();
}

Json::Json(double number) {
    appendJson(m_text, number);
}

Json::Json(const QString& text) : m_text(quoted(text)) {}

Json& Json::add(const QString& key, Json value) {
    m_keys.insert(key);
    m_members.emplace_back(quoted(key) + ':', std::move(value));
    return *this;
}

Json& Json::append(Json value) {
    m_members.emplace_back(QByteArray(), std::move(value));
    return *this;
}

Json& Json::member(const QString& key, const Json& otherwise) {
    if (!has(key))
        add(key, otherwise);
    const QByteArray wanted = quoted(key) + ':';
    return std::find_if(m_members.begin(), m_members.end(), [&](const auto& each) { return each.first == wanted; })
        ->second;
}

int Json::depth() const {
    int deepest = 0;
    for (const auto& member : m_members)
        deepest = std::max(deepest, member.second.depth());
    return deepest + (m_bracket == 0 ? 0 : 1);
}

void Json::write(QByteArray& text) const {
    if (m_bracket == 0) {
        text += m_text;
        return;
    }
    text += m_bracket;
    for (const auto& [key, value] : m_members) {
        if (&value != &m_members.front().second)
            text += ',';
        text += key;
        value.write(text);
    }
    text += m_bracket == '{' ? '}' : ']';
}

} // namespace Prm::document
