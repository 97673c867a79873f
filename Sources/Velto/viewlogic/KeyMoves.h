// The keys that move an answer or a choice, and where they lead.
#pragma once

#include <cstdint>

namespace velto {

// The move that a key requests. On a scale, left and down lead to lower values; among choices, left
// and up lead to the previous one.
enum class Move { left, right, up, down, pageUp, pageDown, toStart, toEnd };

namespace KeyMoves {

// The steps of `move` along an axis, negative towards lower values. Page Up and Page Down move by
// `page` steps; toStart and toEnd give more steps than any axis has.
[[nodiscard]] std::int64_t steps(Move move, std::int64_t page);

// The index of the choice that `move` leads to from `chosen`, among `count` choices. Left and up
// lead to the previous one, right and down to the next one; both wrap around. toStart and toEnd
// lead to the first and the last one; Page Up and Page Down do nothing. From no choice (-1), the
// next one is the first and the previous one the last. Returns -1 if there are no choices.
[[nodiscard]] int movedChoice(int chosen, int count, Move move);

} // namespace KeyMoves

} // namespace velto
