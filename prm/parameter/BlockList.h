#pragma once

#include "prm/View.h"
#include "prm/track/SourceViews.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace Prm::detail {

/// The blocks of several views in ascending order of the views, in pieces of limited length: so adding or removing one
/// moves few others, wherever its place is.
template <class Block> class BlockList {
public:
    using Owned = std::unique_ptr<Block>;

    BlockList() = default;
    BlockList(BlockList&& other) noexcept { *this = std::move(other); }
    BlockList& operator=(BlockList&& other) noexcept {
        m_pieces.swap(other.m_pieces);
        std::swap(m_size, other.m_size);
        return *this;
    }

    bool empty() const { return m_size == 0; }
    std::size_t size() const { return m_size; }
    /// There must be one.
    Block* first() const { return m_pieces.front().front().get(); }

    Block* find(View view) const {
        // Small ids usually are their own position.
        const Piece& front = m_pieces.front();
        if (view.id() < front.size() && front[view.id()]->view == view)
            return front[view.id()].get();
        const Place place = placeOf(view);
        const Piece& piece = m_pieces[place.piece];
        Block* const found = place.position < piece.size() ? piece[place.position].get() : nullptr;
        return found && found->view == view ? found : nullptr;
    }

    /// The views with data on both sides of one, itself included, as far as values between views may need them.
    ViewsAround around(View view) const {
        Place place = placeOf(view);
        int wanted = ViewsAround::capacity / 2;
        while (wanted < ViewsAround::capacity && stepBack(place))
            ++wanted;
        ViewsAround views;
        if (place.position == m_pieces[place.piece].size())
            place = {place.piece + 1, 0};
        for (; wanted > 0 && place.piece < m_pieces.size(); --wanted) {
            views.append(m_pieces[place.piece][place.position]->view);
            if (++place.position == m_pieces[place.piece].size())
                place = {place.piece + 1, 0};
        }
        return views;
    }

    template <class Function> void forEach(const Function& function) const {
        for (const Piece& piece : m_pieces) {
            for (const Owned& block : piece)
                function(*block);
        }
    }

    /// So that adding a block of the view cannot fail.
    void makeRoom(View view) {
        if (m_pieces.empty())
            m_pieces.emplace_back();
        const Place place = placeOf(view);
        if (m_pieces[place.piece].size() == longest)
            split(place);
        Piece& piece = m_pieces[placeOf(view).piece];
        if (piece.size() == piece.capacity())
            piece.reserve(std::max<std::size_t>(2, 2 * piece.size()));
    }

    /// There must be room, and no block of the same view.
    void add(Owned block) {
        const Place place = placeOf(block->view);
        Piece& piece = m_pieces[place.piece];
        piece.insert(piece.begin() + static_cast<std::ptrdiff_t>(place.position), std::move(block));
        ++m_size;
    }

    /// Removes the block of the view, which must be there.
    Owned take(View view) {
        const Place place = placeOf(view);
        Piece& piece = m_pieces[place.piece];
        const auto position = piece.begin() + static_cast<std::ptrdiff_t>(place.position);
        Owned taken = std::move(*position);
        piece.erase(position);
        if (piece.empty())
            m_pieces.erase(m_pieces.begin() + static_cast<std::ptrdiff_t>(place.piece));
        --m_size;
        return taken;
    }

    /// Gives up ownership of the blocks; the caller retires them.
    void release() {
        for (Piece& piece : m_pieces) {
            for (Owned& block : piece)
                static_cast<void>(block.release());
        }
    }

private:
    using Piece = std::vector<Owned>;
    static constexpr std::size_t longest = 512;

    struct Place {
        std::size_t piece;
        std::size_t position;
    };

    /// Where the view's block is or belongs: perhaps after the last one of a piece.
    Place placeOf(View view) const {
        const auto startsAfter = [](View sought, const Piece& piece) {
            return !piece.empty() && sought < piece.front()->view;
        };
        const auto next = std::upper_bound(m_pieces.begin(), m_pieces.end(), view, startsAfter);
        const auto piece = next == m_pieces.begin() ? next : next - 1;
        const auto isBefore = [](const Owned& block, View sought) { return block->view < sought; };
        const auto position = std::lower_bound(piece->begin(), piece->end(), view, isBefore);
        return {static_cast<std::size_t>(piece - m_pieces.begin()),
                static_cast<std::size_t>(position - piece->begin())};
    }

    bool stepBack(Place& place) const {
        if (place.position > 0)
            --place.position;
        else if (place.piece > 0)
            place = {place.piece - 1, m_pieces[place.piece - 1].size() - 1};
        else
            return false;
        return true;
    }

    /// Makes two of a full piece, the second one almost empty where views come in ascending order.
    void split(Place place) {
        const bool goesOn = place.piece + 1 == m_pieces.size() && place.position == longest;
        const std::size_t kept = goesOn ? longest - 1 : longest / 2;
        Piece second;
        second.reserve(goesOn ? 2 : longest);
        if (m_pieces.size() == m_pieces.capacity())
            m_pieces.reserve(2 * m_pieces.size());
        Piece& first = m_pieces[place.piece];
        const auto middle = first.begin() + static_cast<std::ptrdiff_t>(kept);
        std::move(middle, first.end(), std::back_inserter(second));
        first.erase(middle, first.end());
        m_pieces.insert(m_pieces.begin() + static_cast<std::ptrdiff_t>(place.piece) + 1, std::move(second));
    }

    std::vector<Piece> m_pieces;
    std::size_t m_size = 0;
};

} // namespace Prm::detail
