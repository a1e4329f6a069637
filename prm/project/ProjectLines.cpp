#include "prm/project/ProjectLines.h"

#include "prm/ParameterStrings.h"
#include "prm/text/KeyframeText.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace Prm::detail {

namespace {

constexpr char byteOrderMark[] = "\xEF\xBB\xBF";

/// The time by which a line is sorted, after what it shares with the others of its list; false for another line.
bool readPlace(const QByteArray& rest, double& place) {
    const int opening = rest.indexOf("Key(");
    const int end = rest.indexOf(',', std::max(0, opening));
    if (opening < 0 || end < 0)
        return false;
    place = readTime(QString::fromUtf8(rest.mid(opening + 4, end - opening - 4)).trimmed()).toDouble();
    return true;
}

} // namespace

QString ProjectLine::text() const {
    const QString text = QString::fromUtf8(start, size);
    // Qt takes it off, but only at the beginning of a file it is not part of the text.
    const bool isMarked = QByteArray::fromRawData(start, size).startsWith(byteOrderMark);
    return isMarked ? QChar(QChar::ByteOrderMark) + text : text;
}

bool ProjectLine::readInto(QString& text) const {
    uchar allBits = 0;
    for (const char* character = start; character != start + size; ++character)
        allBits |= uchar(*character);
    if (allBits < 128) {
        text = QLatin1String(start, size);
        return true;
    }
    text = this->text();
    return text.toUtf8() == QByteArray::fromRawData(start, size);
}

bool ProjectLine::isConflictMarker() const {
    constexpr int shortest = 7;
    if (size < shortest || (start[0] != '<' && start[0] != '=' && start[0] != '>' && start[0] != '|'))
        return false;
    const char* const end = start + size;
    const char* const rest = std::find_if(start, end, [this](char c) { return c != start[0]; });
    return rest - start >= shortest && (rest == end || *rest == ' ');
}

bool ProjectLine::hasKnownKey() const {
    using namespace ParameterStrings;
    static const std::array<QString, 7> keys{value, views, hidden, before, after, masterParameterId, isKeyframed};
    const QString line = text();
    if (line.startsWith(QLatin1String("name=\"")) || line.contains(QLatin1String(".name=\"")) ||
        line.contains(QLatin1String(".keyframes.append("), Qt::CaseInsensitive))
        return true;
    const int end = line.indexOf(QLatin1Char('='));
    const int dot = end < 0 ? -1 : line.lastIndexOf(QLatin1Char('.'), end);
    const QStringRef key = line.midRef(dot + 1, end - dot - 1);
    return dot > 0 && std::any_of(keys.begin(), keys.end(),
                                  [&](const QString& known) { return key.compare(known, Qt::CaseInsensitive) == 0; });
}

void ProjectLines::rewind() {
    m_position = m_text.startsWith(byteOrderMark) ? 3 : 0;
    m_number = 0;
}

ProjectLine ProjectLines::next() {
    const char* const start = m_text.constData() + m_position;
    const void* const found = std::memchr(start, '\n', static_cast<std::size_t>(m_text.size() - m_position));
    const int stop = found ? static_cast<int>(static_cast<const char*>(found) - m_text.constData()) : m_text.size();
    int length = stop - m_position;
    while (length > 0 && start[length - 1] == '\r')
        --length;
    m_position = stop + 1;
    return {++m_number, start, length};
}

QVector<ProjectLine> ProjectLines::takeSorted(const ProjectLine& last) {
    const QByteArray mark = ".keyframes.append(";
    const QByteArray line = QByteArray::fromRawData(last.start, last.size);
    const int found = line.indexOf(mark);
    if (found < 0)
        return {};
    const QByteArray shared = line.left(found + mark.size());
    QVector<std::pair<double, ProjectLine>> run;
    const auto isOfList = [&](const ProjectLine& next) {
        const QByteArray bytes = QByteArray::fromRawData(next.start, next.size);
        double place = 0;
        if (!bytes.startsWith(shared) || !readPlace(bytes.mid(shared.size()), place))
            return false;
        run.append({place, next});
        return true;
    };
    while (takeIf(isOfList)) {
    }
    std::stable_sort(run.begin(), run.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    QVector<ProjectLine> sorted;
    sorted.reserve(run.size());
    for (const auto& entry : qAsConst(run))
        sorted.append(entry.second);
    return sorted;
}

ProjectLine conflictMarkerIn(const QByteArray& text) {
    for (ProjectLines lines(text); !lines.atEnd();) {
        const ProjectLine line = lines.next();
        if (line.isConflictMarker())
            return line;
    }
    return {};
}

} // namespace Prm::detail
