#pragma once

#include <QHash>
#include <QSet>
#include <QString>

class QJsonObject;

namespace Prm::document {

/// The script names of one set, parameters and subsets together: project text distinguishes them by nothing else.
class ImportNames {
public:
    /// A free name made of the wanted one, which may be any text: "Fill 1", and "Fill_1_2" for the next one like it.
    QString take(const QString& wanted);

private:
    QSet<QString> m_taken;
    /// How often a name was asked for again.
    QHash<QString, int> m_counts;
};

/// A name for a set as project text can hold it: on one line.
QString onOneLine(const QString& name);

/// What an object of the file is, by which the names of its members are chosen: its stated type, or its key.
QString kindOfObject(const QJsonObject& object, const QString& key);
/// The readable name of a member, such as "opacity" for "o"; the key itself where none is known.
QString memberName(const QString& kind, const QString& key);
/// The key that `memberName` gives that name; empty where none does.
QString memberKey(const QString& kind, const QString& name);
/// The name of an object that has none of its own: what its kind is called.
QString kindName(const QString& kind, const QString& listKey);
/// The kind of objects in lists that `kindName` gives that name; empty where none is called so.
QString kindOfName(const QString& name);
QString layerTypeName(int type);
bool isColour(const QString& kind, const QString& key);
/// "x", "y", "z", "w", or "r", "g", "b", "a"; beyond those the number, counted from 1.
QString componentName(int index, bool colour);
/// Lists whose elements are members of the set itself, because the set consists of the list only.
bool isListWithoutSet(const QString& kind, const QString& key);
/// What only identifies an object, or names it, and has no effect on the picture.
bool isBookkeeping(const QString& key);
/// The JSON path of a member: "path.key", or "path["a key"]" where the key is no plain word.
QString jsonPathOf(const QString& path, const QString& key);

} // namespace Prm::document
