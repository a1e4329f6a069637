#include "prm/exchange/SampleHeading.h"

#include "prm/document/LineReading.h"
#include "prm/document/Problem.h"

#include <QRegularExpression>

#include <algorithm>
#include <cctype>

namespace Prm::document {

namespace {

constexpr int longestPath = 1000;

/// What begins the lines before all parameters.
bool isOfHeader(const QByteArray& path) {
    const char* const names[] = {"FileVersion", "ProductName", "ProductBuildNumber", "ProductVersion", "FileTimestamp"};
    return std::any_of(std::begin(names), std::end(names), [&](const char* name) { return path == name; });
}

QByteArray withoutOtherCharacters(QByteArray path) {
    for (char& c : path) {
        const bool isAscii = static_cast<unsigned char>(c) < 0x80;
        if (isAscii && std::isalnum(static_cast<unsigned char>(c)) == 0 && !QByteArray("._-@").contains(c))
            c = '_';
    }
    return path;
}

/// The last @ that is not one of a pair, -1 without one.
int singleAt(const QByteArray& heading) {
    for (int end = heading.size(); end > 0;) {
        const int last = heading.lastIndexOf('@', end - 1);
        int first = last;
        while (first > 0 && heading[first - 1] == '@')
            --first;
        if (last < 0 || (last - first) % 2 == 0)
            return last;
        end = first;
    }
    return -1;
}

View readView(const QByteArray& text) {
    bool isNumber = false;
    const View view(text.trimmed().toUInt(&isNumber));
    if (!isNumber || !view.isValid())
        throw Problem("needs the number of a view after @; an @ of the name is doubled");
    return view;
}

} // namespace

QString sampleHeading(const QString& path, View view) {
    const QString name = QString(path).replace('@', "@@");
    return view == View() ? name : message("%1@%2", name, view.id());
}

SampleHeading readSampleHeading(const QByteArray& heading) {
    const int at = singleAt(heading);
    SampleHeading read;
    if (at >= 0)
        read.view = readView(heading.mid(at + 1));
    read.path = withoutOtherCharacters(heading.left(at >= 0 ? at : heading.size()).trimmed().replace("@@", "@"));
    const QByteArray line = read.path + ".value=0";
    const LineReading reading = readLine(toView(line));
    if (reading.key != Key::Value || reading.path != toView(read.path) || read.path.size() > longestPath)
        throw Problem("is not the path of a parameter");
    if (isOfHeader(read.path))
        throw Problem("is in the header of project text; a parameter needs another name");
    return read;
}

double framesPerUnit(const QString& heading, double framesPerSecond) {
    const QString text = heading.trimmed().toLower();
    if (text.contains("frame"))
        return 1;
    const QStringList words = text.split(QRegularExpression("[^a-z]+"), Qt::SkipEmptyParts);
    const auto has = [&](const QStringList& names) {
        return std::any_of(names.begin(), names.end(), [&](const QString& name) { return words.contains(name); });
    };
    const bool isMilliseconds = has({"ms", "millisecond", "milliseconds"});
    if (!isMilliseconds && !has({"s", "sec", "second", "seconds"}))
        throw Problem("the first column gives the time and is called 'frame', 'seconds' or 'milliseconds', not '%1'",
                      heading.trimmed());
    if (!(framesPerSecond > 0))
        throw Problem("the times are seconds; --fps gives the frames per second");
    return isMilliseconds ? framesPerSecond / 1000 : framesPerSecond;
}

} // namespace Prm::document
