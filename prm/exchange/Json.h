#pragma once

#include <QByteArray>
#include <QSet>
#include <QString>

#include <utility>
#include <vector>

namespace Prm::document {

/// A JSON value that is being made. Other than Qt's it keeps the order of members, the sign of zero, and text that is
/// no valid Unicode; adding to it takes constant time.
class Json {
public:
    static Json object() { return Json('{'); }
    static Json list() { return Json('['); }
    /// A text that is JSON already.
    static Json written(const QByteArray& text) { return Json(text); }

    /// Finite numbers only: JSON has no others.
    Json(double number);
    Json(int number) : Json(static_cast<double>(number)) {}
    Json(const QString& text);
    Json(const char* text) : Json(QString::fromUtf8(text)) {}

    /// Adds a member to an object. A key must not be added twice.
    Json& add(const QString& key, Json value);
    /// Adds an element to a list; to an object, members that are written already.
    Json& append(Json value);
    bool has(const QString& key) const { return m_keys.contains(key); }
    /// The member of an object; it is added if there is none.
    Json& member(const QString& key, const Json& otherwise);
    int count() const { return static_cast<int>(m_members.size()); }
    bool isEmpty() const { return m_members.empty(); }
    /// Of brackets in brackets, as far as values are not written already.
    int depth() const;
    void write(QByteArray& text) const;

private:
    explicit Json(char bracket) : m_bracket(bracket) {}
    explicit Json(const QByteArray& text) : m_text(text) {}

    /// 0 for what has no members.
    char m_bracket = 0;
    QByteArray m_text;
    /// Keys are written already, and empty in lists.
    std::vector<std::pair<QByteArray, Json>> m_members;
    QSet<QString> m_keys;
};

void appendJson(QByteArray& text, double number);

} // namespace Prm::document
