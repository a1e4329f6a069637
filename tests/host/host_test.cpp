#include "host/bsc/MementoUndoable.h"
#include "host/bsc/QPointerEx.h"
#include "host/bsc/ScopedSignalBlocker.h"
#include "host/bsc/UniqBag.h"
#include "host/product/ProductInfo.h"
#include "host/product/Settings.h"
#include "tests/support/Test.h"

#include <QCoreApplication>
#include <QSettings>
#include <QTemporaryDir>

namespace {

// The values come from the hashing library's own one-shot function; a change would orphan every shared cache.
TEST(Hash, SameBytesGiveTheSameHashEverywhere) {
    QByteArray many(1000, '\0');
    for (int i = 0; i < many.size(); ++i)
        many[i] = static_cast<char>(i % 251);
    const QByteArray rows[][2] = {
        {"", "99aa06d3014798d86001c324468d497f"},
        {"a", "a96faf705af16834e6c632b61e964e1f"},
        {"animatable values", "98b91d0932347641cfb9d93ca0f3c44c"},
        {many.left(200), "cb0395310643ba0edd97e9af3609d9f5"},
        {many, "18bf41bc8229e27733ef703fb2b20ed1"},
    };
    for (const auto& [bytes, expected] : rows) {
        Bsc::Hash hash;
        for (const char byte : bytes) {
            const Bsc::Hash before(hash);
            hash.addData(&byte, 1);
            hash.addData(nullptr, 0);
            EXPECT_NE(before.result(), hash.result()) << bytes.size();
        }
        EXPECT_EQ(hash.result().toString(), QString::fromLatin1(expected)) << bytes.size();
        EXPECT_EQ(hash.result().bytes(), QByteArray::fromHex(expected)) << bytes.size();
    }
}

TEST(Hash, AssignmentForgetsWhatWasAdded) {
    Bsc::Hash hash;
    hash.addData("forgotten", 9);
    hash = Bsc::Hash();
    EXPECT_EQ(hash.result(), Bsc::Hash().result());
    EXPECT_THROW(hash.addData(nullptr, 1), std::invalid_argument);
}

using Guarded = Bsc::detail::QPointerEx<QObject, QPointer>;

class Undeclared;
[[maybe_unused]] const Bsc::UniqBag<Bsc::detail::QPointerEx<Undeclared, QPointer>> bagOfAnIncompleteType;

template <class T> std::vector<T> inOrder(const Bsc::UniqBag<T>& bag) {
    return std::vector<T>(bag.begin(), bag.end());
}

TEST(UniqBag, KeepsOneOfEachInTheOrderOfInsertion) {
    Bsc::UniqBag<int> bag{30, 10, 20};
    const Bsc::UniqBag<int> copy(bag);
    EXPECT_FALSE(bag.insert(10));
    EXPECT_TRUE(bag.erase(*bag.begin())) << "the reference is the element's own";
    EXPECT_FALSE(bag.erase(30) || bag.contains(30) || bag == copy);
    EXPECT_TRUE(bag.insert(30));
    EXPECT_EQ(bag, copy) << "order does not count";
    EXPECT_EQ(inOrder(bag), (std::vector<int>{10, 20, 30}));
    EXPECT_EQ(inOrder(copy), (std::vector<int>{30, 10, 20}));
    bag = Bsc::UniqBag<int>(std::move(bag));
    EXPECT_TRUE(bag.erase(20) && bag.insert(20));
    bag.clear();
    EXPECT_TRUE(bag.empty() && bag.insert(10));
}

TEST(QPointerEx, IdentityOutlivesTheObject) {
    alignas(QObject) unsigned char room[sizeof(QObject)];
    Bsc::UniqBag<Guarded> bag;
    for (std::size_t generation = 1; generation <= 3; ++generation) {
        auto* object = new (room) QObject;
        const Guarded guarded(object);
        const uint hash = qHash(guarded);
        EXPECT_TRUE(!bag.contains(object) && bag.insert(object) && !bag.insert(object)) << generation;
        EXPECT_EQ((--bag.end())->get(), object) << generation;
        object->~QObject();
        EXPECT_TRUE(guarded.isNull() && !guarded && !guarded.data());
        EXPECT_EQ(qHash(guarded), hash);
        EXPECT_NE(guarded, Guarded()) << "the dead are not the same as none";
        EXPECT_TRUE(bag.erase(guarded) && bag.insert(guarded));
    }
    EXPECT_EQ(bag, Bsc::UniqBag<Guarded>(bag));
    EXPECT_EQ(bag.size(), 3u) << "the dead are not taken for each other either";
}

TEST(ScopedSignalBlocker, UnblocksOnlyWhatItBlocked) {
    auto object = std::make_unique<QObject>();
    {
        const Bsc::ScopedSignalBlocker outer(*object);
        { const Bsc::ScopedSignalBlocker inner(object.get()); }
        EXPECT_TRUE(object->signalsBlocked());
    }
    EXPECT_FALSE(object->signalsBlocked());
    const Bsc::ScopedSignalBlocker none(nullptr);
    const Bsc::ScopedSignalBlocker survivor(*object);
    object.reset();
}

/// Writes down what happens: a done, -a undone, ~ deleted. Doing c and undoing b throw.
struct Step : Bsc::Command {
    Step(const char* ownName, std::string& everybodys) : name(ownName), log(everybodys) {}
    ~Step() override { log += '~'; }
    void doIt() override { act(' ' + name); }
    void undoIt() override { act('-' + name); }
    QString usageLogInfo() const override { return name == "b" ? QString() : QString::fromStdString(name); }
    void act(const std::string& act) const {
        log += act;
        if (act == " c" || act == "-b")
            throw act;
    }

    const std::string name;
    std::string& log;
};

TEST(CompositeCommand, AllOrNothingBothWaysEvenIfRollingBackFails) {
    std::string log;
    {
        Bsc::CompositeCommand outer;
        auto* const inner = new Bsc::CompositeCommand;
        outer.push_back(inner);
        outer.push_back(nullptr);
        for (const char* name : {"a", "b", "c"})
            inner->push_back(new Step(name, log));
        EXPECT_EQ(outer.size(), 1u);
        EXPECT_EQ(outer.usageLogInfo(), QStringLiteral("a, c"));
        EXPECT_THROW(outer.doIt(), std::string);
        log += ';';
        EXPECT_THROW(outer.undoIt(), std::string);
    }
    EXPECT_EQ(log, " a b c-b-a;-c-b c~~~");
}

/// Writes down each operation with the flag that it saw.
struct Undoable : virtual Bsc::MementoUndoable {
    boost::shared_ptr<Bsc::MementoBase> exportState() const override { return nullptr; }
    void doImportState(boost::shared_ptr<Bsc::MementoBase> /*snapshot*/) override {
        note("do");
        if (isDying && isNested) {
            delete this;
            return;
        }
        const Undoable other(*this);
        other.note("copy");
        *this = other;
        note("assigned");
        if (!std::exchange(isNested, true))
            Bsc::importState(*this, nullptr);
    }
    void postImportState() override { note("post"); }
    void note(const char* operation) const { log += operation + std::string(isImporting() ? "+ " : "- "); }

    bool isNested = false;
    bool isDying = false;
    static inline std::string log;
};

// That it is put back whatever observers do is among the properties of the calls in random order.
TEST(ImportState, FlagBelongsToTheObjectAndItsImports) {
    const std::string imported = "do+ copy- assigned+ ";
    Undoable object;
    Bsc::importState(object, nullptr);
    object.note("left");
    EXPECT_EQ(std::exchange(Undoable::log, {}), imported + imported + "post+ post- left- ");
    Bsc::importState(object, nullptr, true);
    object.note("left");
    EXPECT_EQ(std::exchange(Undoable::log, {}), imported + "post+ left- ");
    auto* const dying = new Undoable;
    dying->isDying = true;
    Bsc::importState(*dying, nullptr);
    EXPECT_EQ(Undoable::log, imported + "do+ ") << "nothing more of it is called";
}

using Product::Settings;

int setting(const char* key, bool systemWide = true) {
    return Settings::value(QString::fromLatin1(key), 7, systemWide).toInt();
}

TEST(Settings, ComeFromTheStoresOfTheOrganisationUnlessReplaced) {
    const QTemporaryDir folder;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.filePath(QStringLiteral("user")));
    QSettings::setPath(QSettings::NativeFormat, QSettings::SystemScope, folder.filePath(QStringLiteral("system")));
    QCoreApplication::setOrganizationName(QStringLiteral("House"));
    QSettings().setValue(QStringLiteral("mine"), 1);
    QSettings(QSettings::SystemScope, QStringLiteral("House")).setValue(QStringLiteral("ours"), 2);
    EXPECT_EQ(setting("mine", false), 1);
    EXPECT_EQ(setting("ours", true), 2);
    EXPECT_EQ(setting("ours", false), 7);
    EXPECT_EQ(setting(""), 7);
    QCoreApplication::setOrganizationName(QString());
    for (const QVariant& answer : {QVariant(1), QVariant()}) {
        Settings::replaceSource([=](const QString&, const QVariant&, bool) { return answer; });
        EXPECT_EQ(setting("absent"), answer.isValid() ? 1 : 7) << "an invalid answer is none";
    }
    Settings::replaceSource(nullptr);
}

TEST(ProductInfo, IsNeverEmptyAndNamedAsAskedUnlessReplaced) {
    const char* const rows[][3] = {
        {"", "0.0.0", "0"}, {"4.1.2 build 812", "4.1.2 build 812", "812"}, {"7-beta", "7-beta", "7"}};
    for (const auto& [stored, version, buildNumber] : rows) {
        QCoreApplication::setApplicationVersion(QString::fromLatin1(stored));
        EXPECT_EQ(Product::qstrGetProductVersion(QString()), QString::fromLatin1(version));
        EXPECT_EQ(Product::qstrGetProductBuildNumber(QString()), QString::fromLatin1(buildNumber));
    }
    QCoreApplication::setApplicationVersion(QString());
    EXPECT_EQ(Product::qstrGetProductName(QStringLiteral("Viewer")), QStringLiteral("Viewer"));
    EXPECT_FALSE(Product::qstrGetProductName(QString()).isEmpty());
    using Replace = void (*)(Product::ProductTextSource);
    const std::pair<Replace, QString (*)(const QString&)> sources[] = {
        {Product::replaceProductName, Product::qstrGetProductName},
        {Product::replaceProductVersion, Product::qstrGetProductVersion},
        {Product::replaceProductBuildNumber, Product::qstrGetProductBuildNumber}};
    for (const auto& [replace, text] : sources) {
        replace([](const QString& application) { return application + QLatin1Char('!'); });
        EXPECT_EQ(text(QStringLiteral("Viewer")), QStringLiteral("Viewer!"));
        replace(nullptr);
    }
}

} // namespace
