#include "host/product/ProductInfo.h"

#include "host/product/Replaceable.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

namespace Product {

namespace {

using ReplaceableText = detail::Replaceable<QString(const QString&)>;

QString unlessEmpty(const QString& text, const char* otherwise) {
    return text.isEmpty() ? QString::fromLatin1(otherwise) : text;
}

QString programName(const QString& application) {
    return application.isEmpty() ? unlessEmpty(QCoreApplication::applicationName(), "unknown") : application;
}

QString programVersion(const QString& /*application*/) {
    return unlessEmpty(QCoreApplication::applicationVersion(), "0.0.0");
}

QString lastDigits(const QString& text) {
    const auto isDigit = [](QChar letter) { return letter >= QLatin1Char('0') && letter <= QLatin1Char('9'); };
    const auto end = std::find_if(text.rbegin(), text.rend(), isDigit);
    const auto begin = std::find_if_not(end, text.rend(), isDigit);
    return QString(begin.base(), static_cast<int>(begin - end));
}

QString programBuildNumber(const QString& /*application*/) {
    return unlessEmpty(lastDigits(QCoreApplication::applicationVersion()), "0");
}

ReplaceableText& nameSource() {
    static ReplaceableText source(programName);
    return source;
}

ReplaceableText& versionSource() {
    static ReplaceableText source(programVersion);
    return source;
}

ReplaceableText& buildNumberSource() {
    static ReplaceableText source(programBuildNumber);
    return source;
}

} // namespace

QString qstrGetProductName(const QString& application) {
    return nameSource()(application);
}

QString qstrGetProductVersion(const QString& application) {
    return versionSource()(application);
}

QString qstrGetProductBuildNumber(const QString& application) {
    return buildNumberSource()(application);
}

void replaceProductName(ProductTextSource source) {
    nameSource().replace(std::move(source));
}

void replaceProductVersion(ProductTextSource source) {
    versionSource().replace(std::move(source));
}

void replaceProductBuildNumber(ProductTextSource source) {
    buildNumberSource().replace(std::move(source));
}

} // namespace Product
