#include "prm/document/LineReading.h"

#include "prm/ParameterStrings.h"
#include "prm/text/NumberText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace Prm::document {

namespace {

constexpr std::string_view declaration = "Key(";

std::string lowerCase(const QString& key) {
    return key.toLower().toStdString();
}

/// The key is in lower case.
bool startsWithKey(std::string_view text, std::string_view key) {
    const auto isSame = [](char lower, char c) { return lower == (c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c); };
    return text.size() >= key.size() && std::equal(key.begin(), key.end(), text.begin(), isSame);
}

/// The order is the reader's: the first that matches wins.
Key keyOf(std::string_view text, bool namesView) {
    namespace Strings = ParameterStrings;
    static const std::array<std::pair<std::string, Key>, 7> keys{
        {{lowerCase(Strings::keyframes), Key::Keyframe},
         {lowerCase(Strings::value), Key::Value},
         {lowerCase(Strings::hidden), Key::Hidden},
         {lowerCase(Strings::isKeyframed), Key::Keyframed},
         {lowerCase(Strings::after), Key::After},
         {lowerCase(Strings::before), Key::Before},
         {lowerCase(Strings::masterParameterId), Key::Master}}};
    if (!namesView && text.compare(0, static_cast<std::size_t>(Strings::views.size()), "views") == 0)
        return Key::Views;
    for (const auto& [name, key] : keys) {
        if (startsWithKey(text, name))
            return key;
    }
    return Key::None;
}

bool isName(std::string_view entry) {
    constexpr std::string_view start = "name=\"";
    return entry.size() > start.size() + 1 && entry.compare(0, start.size(), start) == 0 && entry.back() == '"';
}

std::size_t lastDotBefore(std::string_view line, std::size_t end) {
    return end == 0 ? std::string_view::npos : line.rfind('.', end - 1);
}

/// Where the key begins: after the last dot before "=" or "Key(". The declaration of a keyframe has a dot of its own.
std::size_t keyStart(std::string_view line) {
    static const std::string keyframes = lowerCase(ParameterStrings::keyframes);
    const std::size_t call = line.find(declaration);
    const std::size_t end = std::min({line.find('='), call, line.size()});
    const std::size_t last = lastDotBefore(line, end);
    if (last == std::string_view::npos)
        return 0;
    const std::size_t former = lastDotBefore(line, last);
    const std::size_t beforeCall = former == std::string_view::npos ? 0 : former + 1;
    const bool isCall = end == call && startsWithKey(line.substr(beforeCall, last - beforeCall), keyframes);
    return isCall ? beforeCall : last + 1;
}

/// Takes "view[N]." off the end of a path.
std::size_t entryStart(std::string_view line, std::size_t key, View& view) {
    constexpr std::string_view bracket = "].";
    if (key < bracket.size() || line.substr(key - bracket.size(), bracket.size()) != bracket)
        return key;
    const std::size_t dot = lastDotBefore(line, key - 1);
    const std::size_t start = dot == std::string_view::npos ? 0 : dot + 1;
    QString prefix = toText(line.substr(start, key - start));
    return View::extractStringPrefix(prefix, view) ? start : key;
}

bool isPath(std::string_view path) {
    return !path.empty() && path.front() != '.' && path.back() != '.' && path.find("..") == std::string_view::npos;
}

} // namespace

LineReading readLine(std::string_view line) {
    LineReading reading;
    const std::size_t key = keyStart(line);
    const std::size_t entry = entryStart(line, key, reading.view);
    if (entry == 0)
        return reading;
    reading.path = line.substr(0, entry - 1);
    reading.entry = line.substr(entry);
    if (!isPath(reading.path))
        return reading;
    reading.key = isName(reading.entry) ? Key::Name : keyOf(line.substr(key), reading.view.isValid());
    return reading;
}

std::string_view textAfterEquals(std::string_view line) {
    const std::size_t equals = line.find('=');
    return equals == std::string_view::npos ? std::string_view() : line.substr(equals + 1);
}

std::string_view keyframeTimeText(std::string_view line) {
    const std::size_t start = line.find(declaration);
    if (start == std::string_view::npos)
        return {};
    const std::string_view rest = line.substr(start + declaration.size());
    return rest.substr(0, std::min(rest.find(','), rest.size()));
}

float keyframeTime(std::string_view line) {
    const QString text = toText(keyframeTimeText(line));
    const float time = detail::toFloat(QStringView(text).trimmed());
    return std::isnan(time) ? 0.0F : time;
}

QString toText(std::string_view bytes) {
    const QString text = QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size()));
    // Qt removes it, but here a text is never at the beginning of a file.
    return bytes.compare(0, 3, "\xEF\xBB\xBF") == 0 ? QChar(QChar::ByteOrderMark) + text : text;
}

bool isUtf8(std::string_view bytes) {
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    return std::all_of(bytes.begin(), bytes.end(), isAscii) || toView(toText(bytes).toUtf8()) == bytes;
}

std::string_view toView(const QByteArray& bytes) {
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

QByteArray toBytes(std::string_view bytes) {
    return {bytes.data(), static_cast<int>(bytes.size())};
}

} // namespace Prm::document
