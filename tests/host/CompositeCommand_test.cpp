#include "host/bsc/CompositeCommand.h"

#include <gtest/gtest.h>

#include <string>

namespace {

/// Writes down what happens (a done, -a undone, ~ deleted), and throws at the acts listed (a! done, -a! undone).
class Step : public Bsc::Command {
public:
    Step(const char* name, std::string& log, const char* throwing) : m_name(name), m_log(log), m_throwing(throwing) {}
    ~Step() override { m_log += '~'; }
    void doIt() override { act(' ' + m_name); }
    void undoIt() override { act('-' + m_name); }
    QString usageLogInfo() const override { return m_name == "b" ? QString() : QString::fromStdString(m_name); }

private:
    void act(const std::string& act) {
        m_log += act;
        if (m_throwing.find(act + '!') != std::string::npos)
            throw act;
    }

    std::string m_name;
    std::string& m_log;
    std::string m_throwing;
};

/// Does, undoes and deletes the steps a, b, c, which are one step of a larger command.
void run(const char* throwing, std::string& log) {
    Bsc::CompositeCommand outer;
    auto* inner = new Bsc::CompositeCommand;
    outer.push_back(inner);
    outer.push_back(nullptr);
    for (const char* name : {"a", "b", "c"})
        inner->push_back(new Step(name, log, throwing));
    EXPECT_EQ(outer.size(), 1u);
    EXPECT_EQ(outer.usageLogInfo(), QStringLiteral("a, c"));
    for (const auto operation : {&Bsc::Command::doIt, &Bsc::Command::undoIt}) {
        try {
            (outer.*operation)();
        } catch (const std::string& act) {
            log += " threw" + act;
        }
        log += ';';
    }
}

TEST(CompositeCommand, AllOrNothingBothWays) {
    const char* const rows[][3] = {
        {"nothing fails", "", " a b c;-c-b-a;"},
        {"the last fails to be done", " c!", " a b c-b-a threw c;-c-b-a;"},
        {"one fails to be undone", "-b!", " a b c;-c-b c threw-b;"},
        {"the roll-backs fail as well", " c!-b!", " a b c-b-a threw c;-c-b c threw-b;"},
    };
    for (const auto& [name, throwing, expected] : rows) {
        std::string log;
        run(throwing, log);
        EXPECT_EQ(log, std::string(expected) + "~~~") << name;
    }
}

} // namespace
