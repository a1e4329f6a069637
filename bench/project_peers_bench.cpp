// What project text is compared with: the least that could be done, bytes written to a reserved buffer, and split and
// parsed with from_chars; and what Qt has. The content is the same: each reads the same keyframes into plain memory,
// which is less than the library has to do.

#include "bench/ProjectText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>
#include <QTemporaryFile>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <array>
#include <charconv>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>

namespace {

using Bench::Content;
using Bench::Keyframe;
using Bench::projectContent;
using Bench::projectText;
using Prm::Interpolation;
using Prm::IType;
using Prm::Time;

bool isBezier(const Keyframe& keyframe) {
    return keyframe.interpolationData.interpolation == Interpolation::Bezier;
}

// --- bytes -----------------------------------------------------------------------------------------------------------

class Bytes {
public:
    explicit Bytes(std::size_t size) : m_bytes(new char[size]), m_next(m_bytes.get()) {}

    Bytes& operator<<(std::string_view text) {
        std::memcpy(m_next, text.data(), text.size());
        m_next += text.size();
        return *this;
    }
    Bytes& addShortest(double number) {
        m_next = std::to_chars(m_next, m_next + 32, number).ptr;
        return *this;
    }
    Bytes& addSixDigits(double number) {
        m_next = std::to_chars(m_next, m_next + 32, number, std::chars_format::general, 6).ptr;
        return *this;
    }
    std::string_view text() const { return {m_bytes.get(), static_cast<std::size_t>(m_next - m_bytes.get())}; }

private:
    std::unique_ptr<char[]> m_bytes;
    char* m_next;
};

void writeBytes(Bytes& bytes, std::string_view start, const Keyframe& keyframe) {
    const IType& shape = keyframe.interpolationData;
    bytes << start << (isBezier(keyframe) ? "keyframes.append( BezierKey( " : "keyframes.append( Key( ");
    bytes.addSixDigits(keyframe.time.toDouble()) << ", ";
    bytes.addShortest(keyframe.value) << ", ";
    if (isBezier(keyframe)) {
        bytes.addSixDigits(shape.x1) << ", ";
        bytes.addSixDigits(shape.y1) << ", ";
        bytes.addSixDigits(shape.x2) << ", ";
        bytes.addSixDigits(shape.y2);
    } else {
        bytes << (shape.interpolation == Interpolation::Linear ? "Linear" : "Constant");
    }
    bytes << " ) )\n";
}

struct NamedContent {
    std::string header;
    std::vector<std::string> names;
    std::vector<std::string> setLines;
    const Content& content;
};

/// What does not have to be computed.
NamedContent namedContent(qint64 lines) {
    const QByteArray& text = projectText(lines);
    NamedContent named{text.left(text.indexOf("node0")).toStdString(), {}, {}, projectContent(lines)};
    const Prm::ParameterSet* former = nullptr;
    for (const auto& curve : Bench::animatedProject(lines).curves) {
        const Prm::ParameterSet* const set = curve->parentSet();
        named.names.push_back(Bench::nameOf(*curve).toStdString() + '.');
        const QString line = set->scriptName() + QStringLiteral(".name=\"") + set->name() + QStringLiteral("\"\n");
        named.setLines.push_back(set == former ? std::string() : line.toStdString());
        former = set;
    }
    return named;
}

void writeBytes(Bytes& bytes, const NamedContent& named) {
    bytes << named.header;
    for (std::size_t i = 0; i < named.names.size(); ++i) {
        const std::string& start = named.names[i];
        bytes << named.setLines[i] << start << "views=[0]\n";
        for (const Keyframe& keyframe : named.content[i])
            writeBytes(bytes, start, keyframe);
        bytes << start << "view[0].value=0\n" << start << "before=Constant\n" << start << "after=Constant\n";
    }
}

void bytesText(benchmark::State& state) {
    const QByteArray& expected = projectText(state.range(0));
    const NamedContent named = namedContent(state.range(0));
    for (auto _ : state) {
        Bytes bytes(static_cast<std::size_t>(expected.size()) + 64);
        Bench::measure(state, [&] { writeBytes(bytes, named); });
        if (bytes.text() != expected.toStdString())
            state.SkipWithError("the bytes differ");
    }
}

/// Takes a text apart, from its beginning.
class Parts {
public:
    explicit Parts(std::string_view text) : m_rest(text) {}

    bool isAtEnd() const { return m_rest.empty(); }
    std::string_view rest() const { return m_rest; }
    std::string_view upTo(char end) {
        const auto* const found = static_cast<const char*>(std::memchr(m_rest.data(), end, m_rest.size()));
        const std::size_t size = found ? static_cast<std::size_t>(found - m_rest.data()) : m_rest.size();
        const std::string_view part = m_rest.substr(0, size);
        m_rest.remove_prefix(std::min(size + 1, m_rest.size()));
        return part;
    }
    bool skip(std::string_view start) {
        const bool begins = m_rest.substr(0, start.size()) == start;
        if (begins)
            m_rest.remove_prefix(start.size());
        return begins;
    }
    double number() {
        skip(" ");
        double number = 0;
        const auto end = std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), number).ptr;
        m_rest.remove_prefix(static_cast<std::size_t>(end - m_rest.data()));
        skip(",");
        return number;
    }

private:
    std::string_view m_rest;
};

Keyframe readKeyframe(Parts& parts) {
    const bool bezier = parts.skip("Bezier");
    parts.skip("Key( ");
    Keyframe keyframe;
    keyframe.time = Time::fromFloat(static_cast<float>(parts.number()));
    keyframe.value = parts.number();
    if (!bezier) {
        keyframe.interpolationData = {parts.skip(" Linear") ? Interpolation::Linear : Interpolation::Constant};
        return keyframe;
    }
    std::array<double, 4> shape{};
    for (double& number : shape)
        number = parts.number();
    keyframe.interpolationData = {Interpolation::Bezier, shape[0], shape[1], shape[2], shape[3]};
    return keyframe;
}

Content readBytes(const QByteArray& text, const std::unordered_map<std::string_view, std::size_t>& curves) {
    Content content(curves.size());
    Parts lines({text.constData(), static_cast<std::size_t>(text.size())});
    while (!lines.isAtEnd()) {
        const std::string_view line = lines.upTo('\n');
        Parts parts(line);
        const std::size_t length = parts.upTo('.').size() + 1 + parts.upTo('.').size() + 1;
        if (!parts.skip("keyframes.append( "))
            continue;
        const auto curve = curves.find(line.substr(0, length));
        if (curve != curves.end())
            content[curve->second].push_back(readKeyframe(parts));
    }
    return content;
}

/// Measures what reads the whole content into plain memory.
template <class Read> void readContent(benchmark::State& state, const Read& read) {
    for (auto _ : state) {
        Content content;
        Bench::measure(state, [&] { content = read(); });
        if (!Bench::isContent(content, state.range(0)))
            state.SkipWithError("not all was read");
    }
}

void bytesRead(benchmark::State& state) {
    const QByteArray& text = projectText(state.range(0));
    const NamedContent named = namedContent(state.range(0));
    std::unordered_map<std::string_view, std::size_t> curves;
    for (std::size_t i = 0; i < named.names.size(); ++i)
        curves.emplace(named.names[i], i);
    readContent(state, [&] { return readBytes(text, curves); });
}

// --- what Qt offers --------------------------------------------------------------------------------------------------

QVector<double> shapeOf(const Keyframe& keyframe) {
    const IType& shape = keyframe.interpolationData;
    return isBezier(keyframe) ? QVector<double>{shape.x1, shape.y1, shape.x2, shape.y2} : QVector<double>();
}

/// Writes a keyframe as JSON, and reads it.
struct JsonForm {
    QJsonValue (*write)(const Keyframe& keyframe);
    Keyframe (*read)(const QJsonValue& value);
};

QJsonArray jsonShape(const Keyframe& keyframe) {
    QJsonArray numbers;
    for (const double number : shapeOf(keyframe))
        numbers.append(number);
    return numbers;
}

Interpolation kindOf(const QString& name) {
    return name == QLatin1String("Linear")   ? Interpolation::Linear
           : name == QLatin1String("Bezier") ? Interpolation::Bezier
                                             : Interpolation::Constant;
}

IType shapeFrom(const QString& kind, const QJsonArray& numbers, int first) {
    const auto number = [&](int i) { return numbers.at(first + i).toDouble(); };
    return {kindOf(kind), number(0), number(1), number(2), number(3)};
}

/// As one would write them.
const JsonForm withNames{[](const Keyframe& keyframe) -> QJsonValue {
                             QJsonObject parts{
                                 {QStringLiteral("time"), keyframe.time.toDouble()},
                                 {QStringLiteral("value"), keyframe.value},
                                 {QStringLiteral("interpolation"), isBezier(keyframe) ? "Bezier" : "Linear"}};
                             if (isBezier(keyframe))
                                 parts.insert(QStringLiteral("shape"), jsonShape(keyframe));
                             return parts;
                         },
                         [](const QJsonValue& value) -> Keyframe {
                             const QJsonObject parts = value.toObject();
                             return {Time::fromDouble(parts.value(QLatin1String("time")).toDouble()),
                                     parts.value(QLatin1String("value")).toDouble(),
                                     shapeFrom(parts.value(QLatin1String("interpolation")).toString(),
                                               parts.value(QLatin1String("shape")).toArray(), 0)};
                         }};

/// As short as JSON can have them: time, value, kind, and a shape's four numbers.
const JsonForm withoutNames{
    [](const Keyframe& keyframe) -> QJsonValue {
        QJsonArray parts{keyframe.time.toDouble(), keyframe.value, isBezier(keyframe) ? "Bezier" : "Linear"};
        for (const double number : shapeOf(keyframe))
            parts.append(number);
        return parts;
    },
    [](const QJsonValue& value) -> Keyframe {
        const QJsonArray parts = value.toArray();
        return {Time::fromDouble(parts.at(0).toDouble()), parts.at(1).toDouble(),
                shapeFrom(parts.at(2).toString(), parts, 3)};
    }};

QByteArray jsonText(qint64 lines, const JsonForm& form) {
    QJsonArray curves;
    for (const auto& curve : projectContent(lines)) {
        QJsonArray keyframes;
        for (const Keyframe& keyframe : curve)
            keyframes.append(form.write(keyframe));
        curves.append(QJsonObject{{QStringLiteral("keyframes"), keyframes}});
    }
    return QJsonDocument(curves).toJson(QJsonDocument::Compact);
}

Content contentOfJson(const QByteArray& text, const JsonForm& form) {
    const QJsonDocument document = QJsonDocument::fromJson(text);
    Content content;
    for (const auto curve : document.array()) {
        content.emplace_back();
        for (const auto keyframe : curve.toObject().value(QLatin1String("keyframes")).toArray())
            content.back().push_back(form.read(keyframe));
    }
    return content;
}

void readJson(benchmark::State& state, const JsonForm& form) {
    const QByteArray text = jsonText(state.range(0), form);
    readContent(state, [&] { return contentOfJson(text, form); });
}

void jsonRead(benchmark::State& state) {
    readJson(state, withNames);
}

void shortJsonRead(benchmark::State& state) {
    readJson(state, withoutNames);
}

QByteArray xmlText(qint64 lines) {
    QByteArray text;
    QXmlStreamWriter xml(&text);
    const auto number = [](double value) { return QString::number(value, 'g', QLocale::FloatingPointShortest); };
    xml.writeStartElement(QStringLiteral("curves"));
    for (const auto& curve : projectContent(lines)) {
        xml.writeStartElement(QStringLiteral("curve"));
        for (const Keyframe& keyframe : curve) {
            const QVector<double> shape = shapeOf(keyframe);
            xml.writeEmptyElement(isBezier(keyframe) ? QStringLiteral("Bezier") : QStringLiteral("Linear"));
            xml.writeAttribute(QStringLiteral("time"), number(keyframe.time.toDouble()));
            xml.writeAttribute(QStringLiteral("value"), number(keyframe.value));
            for (int i = 0; i < shape.size(); ++i)
                xml.writeAttribute(QStringLiteral("shape%1").arg(i), number(shape.at(i)));
        }
        xml.writeEndElement();
    }
    xml.writeEndElement();
    return text;
}

Content readXml(const QByteArray& text) {
    QXmlStreamReader xml(text);
    Content content;
    xml.readNextStartElement();
    while (xml.readNextStartElement()) {
        content.emplace_back();
        while (xml.readNextStartElement()) {
            const QXmlStreamAttributes parts = xml.attributes();
            const auto number = [&](const char* name) { return parts.value(QLatin1String(name)).toDouble(); };
            const Interpolation kind = kindOf(xml.name().toString());
            content.back().emplace_back(Time::fromDouble(number("time")), number("value"), IType(kind));
            if (kind == Interpolation::Bezier)
                content.back().back().interpolationData =
                    IType(kind, number("shape0"), number("shape1"), number("shape2"), number("shape3"));
            xml.skipCurrentElement();
        }
    }
    return content;
}

void xmlRead(benchmark::State& state) {
    const QByteArray text = xmlText(state.range(0));
    readContent(state, [&] { return readXml(text); });
}

/// A key for each keyframe, below a group for each curve.
void writeSettings(const QString& fileName, qint64 lines) {
    QSettings settings(fileName, QSettings::IniFormat);
    const Content& content = projectContent(lines);
    for (std::size_t i = 0; i < content.size(); ++i) {
        settings.beginWriteArray(QStringLiteral("curve%1").arg(i));
        for (std::size_t k = 0; k < content[i].size(); ++k) {
            const Keyframe& keyframe = content[i][k];
            QVariantList parts{keyframe.time.toDouble(), keyframe.value,
                               static_cast<uint>(keyframe.interpolationData.interpolation)};
            for (const double number : shapeOf(keyframe))
                parts.append(number);
            settings.setArrayIndex(static_cast<int>(k));
            settings.setValue(QStringLiteral("keyframe"), parts);
        }
        settings.endArray();
    }
}

Content readSettings(const QString& fileName) {
    QSettings settings(fileName, QSettings::IniFormat);
    Content content(static_cast<std::size_t>(settings.childGroups().size()));
    for (std::size_t i = 0; i < content.size(); ++i) {
        const int count = settings.beginReadArray(QStringLiteral("curve%1").arg(i));
        for (int k = 0; k < count; ++k) {
            settings.setArrayIndex(k);
            const QVariantList parts = settings.value(QStringLiteral("keyframe")).toList();
            const auto number = [&](int part) { return parts.value(part).toDouble(); };
            content[i].emplace_back(
                Time::fromDouble(number(0)), number(1),
                IType(Interpolation(parts.value(2).toUInt()), number(3), number(4), number(5), number(6)));
        }
        settings.endArray();
    }
    return content;
}

void settingsRead(benchmark::State& state) {
    QTemporaryFile file;
    file.open();
    writeSettings(file.fileName(), state.range(0));
    readContent(state, [&] { return readSettings(file.fileName()); });
}

BENCHMARK(bytesText)->Apply(Bench::overLines);
BENCHMARK(bytesRead)->Apply(Bench::overLines);
BENCHMARK(jsonRead)->Apply(Bench::overLines);
BENCHMARK(shortJsonRead)->Apply(Bench::overLines);
BENCHMARK(xmlRead)->Apply(Bench::overLines);
// A million keys take half a minute.
BENCHMARK(settingsRead)->Unit(benchmark::kMillisecond)->UseManualTime()->Arg(10000)->Arg(100000);

} // namespace
