// A project text into a typed tree of every kind of member. Nothing is lost but what the report and `saveLosses` name,
// and what was loaded and saved once is loaded and saved alike ever after.

#include "fuzz/Fuzz.h"
#include "host/bsc/Hash.h"
#include "host/product/ProductInfo.h"
#include "prm/CompoundParameter.h"
#include "prm/MovedParameter.h"
#include "prm/NumericParameter.h"
#include "prm/ProjectFile.h"
#include "prm/StaticParameter.h"
#include "prm/project/Invariants.h"

#include <QSet>

#include <algorithm>

using namespace Prm;

namespace {

struct Project {
    Project() {
        for (const auto replace : {Product::replaceProductName, Product::replaceProductVersion})
            replace([](const QString&) { return QStringLiteral("1.2"); });
        file.setTimeOfWriting(QDateTime(QDate(2021, 3, 1), QTime(), Qt::UTC));
        root.addParameterSet(a);
        root.addParameterSet(b);
        a.addParameterSet(c);
        ParameterWithoutType* const members[] = {&flag, &number, &text, &point, &together};
        for (ParameterWithoutType* member : members)
            a.addParameter(*member);
        ParameterWithoutType* const others[] = {&whole, &natural, &place, &fixed, &nameless};
        for (ParameterWithoutType* member : others)
            c.addParameter(*member);
        together.addParameter(x);
        together.addParameter(y);
        nameless.addParameter(z);
        nameless.addParameter(inner);
        inner.addParameter(w);
        c.addBasicParameter(count);
        c.addBasicParameter(path);
        b.addBasicParameter(oldNumber);
        b.addBasicParameter(oldPlace);
        oldNumber.setTargetParam(number);
        oldPlace.setTargetParam(oldNumber);
        text.addAdditionalScriptName(QStringLiteral("title"));
        flag.addAdditionalScriptName(QStringLiteral("off"), [](const QString& value) {
            return value == QLatin1String("0") ? QStringLiteral("1") : QStringLiteral("0");
        });
    }

    Parameter<bool> flag{"flag"};
    NumericParameter<double> number{"number", 1.5};
    NumericParameter<int> whole{"whole"};
    NumericParameter<unsigned int> natural{"natural", 3, Keyframed};
    Parameter<QString> text{"text"};
    PointParameter point{"point"};
    Parameter<QPoint> place{"place", QPoint(), Splittable};
    NumericParameter<double> fixed{"fixed", 0, ParameterOptions()};
    NumericParameter<double> x{"x"}, y{"y"}, z{"z"}, w{"w"};
    CompoundParameter together{"together", true}, nameless, inner{"inner"};
    OwnedStaticParameter<unsigned int> count{"count"};
    OwnedStaticParameter<QString> path{"path"};
    MovedParameter oldNumber{"old"}, oldPlace{"older"};
    ParameterSet c{"c"}, b{"b"}, a{"a"}, root;
    ProjectFile file{root};
};

bool isKept(const ProjectFileFinding& finding) {
    return finding.reason == ProjectFileFinding::Unknown || finding.reason == ProjectFileFinding::Refused ||
           finding.reason == ProjectFileFinding::UnresolvedMaster || finding.reason == ProjectFileFinding::NotUtf8;
}

/// Numbers that are none are in the report, whatever else is in the text.
void accountForNumbers(const ProjectFile& file, const QByteArray& loaded) {
    QSet<int> reported;
    for (const ProjectFileFinding& finding : file.report())
        reported.insert(finding.lineNumber);
    int number = 0;
    for (const QByteArray& line : loaded.split('\n')) {
        ++number;
        bool isNumber = true;
        if (line.startsWith("a.number.value="))
            Fuzz::textOf(line.mid(15)).toDouble(&isNumber);
        HOLD(isNumber || reported.contains(number));
    }
}

/// What the format cannot hold, without what could not be read.
bool isLosslessNow(const ProjectFile& file) {
    const QStringList losses = file.saveLosses();
    return std::all_of(losses.begin(), losses.end(), [](const QString& loss) { return loss.startsWith("line "); });
}

/// What is kept is in the report, in the order of the lines, and in the file.
void account(const ProjectFile& file, const QByteArray& loaded, const QByteArray& saved) {
    QByteArray kept;
    int last = 0;
    for (const ProjectFileFinding& finding : file.report()) {
        HOLD(finding.lineNumber >= last && finding.lineNumber <= std::max(1, loaded.count('\n') + 1));
        last = finding.lineNumber;
        HOLD(finding.lineNumber == 0 || !finding.reasonToString().isEmpty());
        if (isKept(finding))
            kept += finding.text.toUtf8() + '\n';
    }
    QByteArray written;
    for (const QByteArray& line : file.keptLines()) {
        HOLD(loaded.contains(line) && saved.contains(line));
        written += Fuzz::textOf(line).toUtf8() + '\n';
    }
    Fuzz::same("what is reported is kept", kept, written);
}

QByteArray hashOf(const ParameterSet& root) {
    Bsc::Hash hash;
    root.forEachParameterAndPart([&](const ParameterWithoutType* parameter) {
        parameter->calculateHash(hash, Context(Time::fromDouble(1.5), View(1)));
    });
    return hash.result().bytes();
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray first = Fuzz::bytesOf(data, size);
    Project one;
    const QByteArray untouched = one.file.text();
    if (!one.file.loadText(first)) {
        HOLD(!one.file.report().isEmpty() && !one.file.errorString().isEmpty());
        Fuzz::same("a text that is refused edits nothing", untouched, one.file.text());
        return 0;
    }
    Fuzz::intact(detail::verify(one.root));
    accountForNumbers(one.file, first);
    const bool isLossless = isLosslessNow(one.file);
    const QByteArray second = one.file.text();
    account(one.file, first, second);

    Project two;
    HOLD(two.file.loadText(second));
    for (const ProjectFileFinding& finding : two.file.report()) {
        if (!isKept(finding))
            Fuzz::fail("what was saved is well formed", finding.text);
    }
    const QByteArray third = two.file.text();
    if (isLossless)
        Fuzz::same("saving loses nothing", second, third);
    Project three;
    three.file.loadText(third);
    HOLD(hashOf(two.root) == hashOf(three.root) || !isLossless);
    if (isLosslessNow(two.file))
        Fuzz::same("saving again loses nothing", third, three.file.text());
    // Over what is there already.
    one.file.loadText(third);
    Fuzz::intact(detail::verify(one.root));
    return 0;
}
