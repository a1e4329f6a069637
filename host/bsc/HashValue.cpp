#include "host/bsc/HashValue.h"

#include <QtEndian>

namespace Bsc {

QByteArray HashValue::bytes() const {
    QByteArray bytes(16, Qt::Uninitialized);
    qToBigEndian(high, bytes.data());
    qToBigEndian(low, bytes.data() + 8);
    return bytes;
}

QString HashValue::toString() const {
    return QString::fromLatin1(bytes().toHex());
}

} // namespace Bsc
