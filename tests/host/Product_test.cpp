#include "host/product/ProductInfo.h"
#include "host/product/Settings.h"

#include <QCoreApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <QVector>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

using Product::Settings;

int setting(const char* key, bool systemWide = true) {
    return Settings::value(QString::fromLatin1(key), 7, systemWide).toInt();
}

TEST(Settings, ComeFromTheStoresOfTheOrganisation) {
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
}

TEST(Settings, SourceIsReplacedWhileOthersAsk) {
    std::atomic<bool> stop{false};
    std::thread asker([&] {
        while (!stop)
            EXPECT_TRUE(QVector<int>({1, 2, 7}).contains(setting("absent")));
    });
    for (int i = 0; i < 500; ++i)
        Settings::replaceSource([answer = 1 + i % 2](const QString&, const QVariant&, bool) { return answer; });
    stop = true;
    asker.join();
    EXPECT_EQ(setting("absent"), 2);
    Settings::replaceSource([](const QString&, const QVariant&, bool) { return QVariant(); });
    EXPECT_EQ(setting("absent"), 7) << "an invalid answer is none";
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
    EXPECT_FALSE(Product::qstrGetProductName(QString()).isEmpty());
    const QString name = QStringLiteral("Viewer");
    Product::replaceProductName([](const QString& application) { return application + QLatin1Char('!'); });
    EXPECT_EQ(Product::qstrGetProductName(name), QStringLiteral("Viewer!"));
    Product::replaceProductName(nullptr);
    EXPECT_EQ(Product::qstrGetProductName(name), name);
}

} // namespace
