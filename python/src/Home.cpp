#include "python/src/Home.h"

namespace PrmPython {

Home::Home(const boost::shared_ptr<Prm::ParameterSet>& sets)
    : root(sets), file(std::make_unique<Prm::ProjectFile>(*sets)), views(usualViews()) {
    root->changeParameterTree(root->parameterTree(), this);
}

Home::~Home() {
    if (root)
        root->changeParameterTree(this, nullptr);
}

Prm::ParameterSet& Home::ownedRoot() const {
    if (!root)
        throw DeadReference();
    requireOwner(*this, nullptr);
    return *root;
}

void Home::close() {
    if (!root)
        return;
    ownedRoot();
    if (history.isBusy() || saving > 0)
        throw NotNow("the project cannot be closed within an edit, or while it is saved");
    history.clear();
    const Deleting deleting;
    file.reset();
    root->changeParameterTree(this, nullptr);
    root.reset();
}

const Prm::Views& Home::usualViews() {
    static const Prm::Views& usual = *[] {
        auto* const made = new Prm::Views;
        made->setViewNames({{"Left", "L"}, {"Right", "R"}});
        return made;
    }();
    return usual;
}

void perform(Home* home, const void* subject, std::unique_ptr<Bsc::Command> edit) {
    buryLeftBehind();
    if (home) {
        home->history.run(std::move(edit), subject);
        buryLeftBehind();
        return;
    }
    thread_local int running = 0;
    thread_local bool isTooDeep = false;
    refuseEndless(running, isTooDeep);
    {
        const Counted<int> nested(running);
        const Working working;
        edit->doIt();
    }
    const Deleting deleting;
    edit.reset();
}

} // namespace PrmPython
