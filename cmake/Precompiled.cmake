# The headers of others that most sources include, compiled once for a target. Off by default: a build without it shows
# that each source includes what it uses.
function(prm_precompile target)
    if(PRM_PRECOMPILE)
        target_precompile_headers(${target} PRIVATE
            <algorithm> <array> <atomic> <cmath> <functional> <limits> <map> <memory> <optional> <random> <set>
            <stdexcept> <string> <type_traits> <typeinfo> <utility> <vector>
            <boost/function.hpp> <boost/make_shared.hpp> <boost/shared_ptr.hpp>
            <QByteArray> <QCoreApplication> <QDebug> <QFileInfo> <QHash> <QJsonDocument> <QJsonObject> <QLocale>
            <QMetaType> <QObject> <QPointF> <QPointer> <QSet> <QString> <QStringList> <QStringView> <QTextStream>
            <QVariant> <QVector>
            ${ARGN})
    endif()
endfunction()
