#pragma once

#include "prm/document/Problem.h"

namespace Prm::document {

/// The most that the program takes and makes. What is small in a file can be large in memory: a long name in many rows,
/// brackets around nothing, a long range with a short step.
namespace Most {

constexpr qint64 bytesOfInput = 1LL << 30;
constexpr qint64 bytesOfAnimation = 64LL << 20;
/// Of what reading an animation takes.
constexpr qint64 bytesOfJson = 768LL << 20;
/// Of a path.
constexpr int levels = 1000;
/// Of which each is the master of the next.
constexpr std::size_t masters = 100;
constexpr qint64 frames = 1000000;
constexpr qint64 values = 10000000;
constexpr std::size_t curves = 1000;
/// Of all texts of a result.
constexpr qint64 characters = 1LL << 27;

} // namespace Most

/// An amount that is spent piece by piece.
class Budget {
public:
    /// `refusal` is the message when more is spent than there is, with %1 for the amount.
    Budget(qint64 most, const char* refusal) : m_left(most), m_refusal(QLatin1String(refusal)) {
        m_refusal.replace(QLatin1String("%1"), QString::number(most));
    }

    /// Throws `Fault`, with the place before its message.
    template <class Fault = Problem> void spend(qint64 amount, const QString& place = {}) {
        constexpr int longest = 120;
        m_left -= amount;
        if (m_left < 0)
            throw Fault("%1%2", place.isEmpty() ? place : place.left(longest) + QLatin1String(": "), m_refusal);
    }

private:
    qint64 m_left;
    QString m_refusal;
};

/// For the texts of a result.
class TextBudget : public Budget {
public:
    TextBudget() : Budget(Most::characters, "more than %1 characters of text, as by long names in many rows") {}
};

} // namespace Prm::document
