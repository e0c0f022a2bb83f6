// What the launcher and the kernel of the unit share.
#pragma once

namespace lumo {

// The columns that one block permutes, their loads under way together.
constexpr int columnsOfBlock = 4;

// The interchanges whose permutation one launch applies, and the rows that they can move.
constexpr int interchangesAtOnce = 64, movedAtOnce = 2 * interchangesAtOnce;

// Which rows move where: row from[r] becomes row to[r]. Some may stay.
struct RowMoves {
    int count;
    unsigned from[movedAtOnce], to[movedAtOnce];
};

}  // namespace lumo
