// What a host and the library share: commands, snapshots, hashes, bags, settings, and a tree that is notified of sets.

#include "host/bsc/CompositeCommand.h"
#include "host/bsc/Hash.h"
#include "host/bsc/UniqBag.h"
#include "host/product/Settings.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterSet.h"

#include <QTextStream>

using Prm::Time;

namespace {

// [command]
/// A command of the host, for the same undo stack as the edits of parameters.
class Rename : public Bsc::Command {
public:
    Rename(Prm::ParameterSet& set, const QString& name) : m_set(set), m_other(name) {}
    void doIt() override { exchange(); }
    void undoIt() override { exchange(); }

private:
    void exchange() {
        const QString former = m_set.name();
        m_set.setDisplayName(m_other);
        m_other = former;
    }

    Prm::ParameterSet& m_set;
    QString m_other;
};
// [command]

// [tree]
/// Updates a panel of the host when sets are added and removed.
struct Tree : Prm::ParameterTree {
    void subtreeAdded(Prm::ParameterSet* subtree) override { shown << subtree->scriptName(); }
    void subtreeRemoved(Prm::ParameterSet* subtree) override { shown.removeOne(subtree->scriptName()); }
    QStringList shown;
};
// [tree]

} // namespace

int main() {
    QTextStream out(stdout);
    Tree tree;
    Prm::ParameterSet root("root", &tree), logo("logo");
    root.addParameterSet(logo);
    out << "in the tree: " << tree.shown.join(", ") << '\n';

    Bsc::CompositeCommand command;
    command.push_back(new Rename(logo, "Station logo"));
    command.doIt();
    out << "renamed: " << logo.name() << '\n';
    command.undoIt();

    Prm::NumericParameter<double> opacity("opacity", 0.5);
    // [hash]
    // Names what was drawn: the same on every machine, so that several can share a cache.
    Bsc::Hash hash;
    opacity.calculateHash(hash, Time::fromInt(3));
    const Bsc::HashValue drawn = hash.result();
    out << "cache/" << drawn.toString() << ".png\n";
    // [hash]

    // [snapshot]
    const boost::shared_ptr<Bsc::MementoBase> before = opacity.exportState();
    opacity.vSetValue(1.0, Time::fromInt(3));
    Bsc::importState(opacity, before); // emits PARAMETER_ASSIGNED; isImporting() is true meanwhile
    // [snapshot]

    // [bag]
    Bsc::UniqBag<int> bag;
    const bool first = bag.insert(7); // true: it was new
    const bool again = bag.insert(7); // false
    // [bag]

    // [settings]
    Product::Settings::replaceSource(
        [](const QString& key, const QVariant& standard, bool) { return key == "MaxViews" ? QVariant(12) : standard; });
    const int maxViews = Product::Settings::value("MaxViews", 3).toInt();
    // [settings]
    out << "at most " << maxViews << " views\n";
    return logo.name() == "logo" && opacity.keyframeCount({}) == 0 && first && !again && maxViews == 12 ? 0 : 1;
}
