// The sifts and the pruned search shared by every heap of the unit, over an array of entries
// (an element pointer, or a slot holding the element and a copy of what orders it) whose
// elements' Index fields the heap keeps equal to their positions.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

#include "DataStructures/HeapElements.h"

namespace kz::detail {

struct THeapAccess {
  template <class E>
  static void SetIndex(E* Element, std::int32_t Index) {
    Element->FIndex = Index;
  }
  template <class E, class H>
  static void SetOwner(E* Element, H* Heap) {
    Element->FOwner = Heap;
  }
};

/// The element an entry of a heap's array holds.
template <class S>
auto* ElementOf(const S& Entry) {
  if constexpr (std::is_pointer_v<S>)
    return Entry;
  else
    return Entry.Element;
}

/// Puts Entry at I and, when Write, sets its element's Index.
template <bool Write = true, class S>
void Put(std::vector<S>& H, std::size_t I, const S& Entry) {
  H[I] = Entry;
  if constexpr (Write) THeapAccess::SetIndex(ElementOf(Entry), static_cast<std::int32_t>(I));
}

/// Runs Run(std::bool_constant<Flag>{}), so that a sift is compiled once for each value of
/// a flag it would otherwise test on every level (whether it writes Index, a heap's order).
template <class F>
decltype(auto) WithFlag(bool Flag, F&& Run) {
  if (Flag) return Run(std::true_type{});
  return Run(std::false_type{});
}

// The position a sift has emptied, and the entry that belongs there once the sift stops;
// filled on the way out, also when a comparison raises, so that every Index stays true.
template <class S, bool Write>
struct THole {
  std::vector<S>& H;
  const S Entry;
  std::size_t At;
  THole(std::vector<S>& AH, std::size_t AAt) : H(AH), Entry(AH[AAt]), At(AAt) {}
  THole(const THole&) = delete;
  ~THole() { Put<Write>(H, At, Entry); }
};

/// Moves the entry at I up past every parent for which MoveDown(Parent, Entry) holds, each
/// such parent shifting down one level (one Index written per level unless !Write). Answers
/// its element.
template <bool Write = true, class S, class FMoveDown>
auto* SiftUp(std::vector<S>& H, std::int32_t I, FMoveDown MoveDown) {
  THole<S, Write> Hole(H, static_cast<std::size_t>(I));
  while (Hole.At > 0) {
    const std::size_t P = (Hole.At - 1) / 2;
    if (!MoveDown(H[P], Hole.Entry)) break;
    Put<Write>(H, Hole.At, H[P]);
    Hole.At = P;
  }
  return ElementOf(Hole.Entry);
}

/// Prefetches nothing beyond the entries.
struct TNoLookAhead {
  template <class S>
  static void Touch(const S&) {}
};

/// Moves the entry at I down while MoveUp(Child, Entry) holds for the chosen child (the
/// right one when TakeRight(Right, Left)), the child shifting up one level. Answers the
/// entry's element. The sift prefetches the entries three levels down; Ahead::Touch(Entry)
/// may prefetch what comparing an entry will read, and is called on the entries two levels
/// down. Index fields are written as SiftUp's.
template <class Ahead, bool Write = true, class S, class FTakeRight, class FMoveUp>
auto* SiftDown(std::vector<S>& H, std::int32_t I, FTakeRight TakeRight, FMoveUp MoveUp) {
  const std::size_t N = H.size();
  THole<S, Write> Hole(H, static_cast<std::size_t>(I));
  // Positions stay below 2^31, so 8i + 14 cannot overflow a size_t.
  for (std::size_t K = 2 * Hole.At + 1; K < N; K = 2 * Hole.At + 1) {
    // Memory bound below the first levels: ask early for the entries three levels down and
    // for what the entries two levels down point to.
    if (const std::size_t Far = 8 * Hole.At + 7; Far < N) {
      __builtin_prefetch(H.data() + Far);
      __builtin_prefetch(H.data() + std::min(Far + 7, N - 1));
    }
    for (std::size_t G = 4 * Hole.At + 3, End = std::min(G + 4, N); G < End; ++G) Ahead::Touch(H[G]);
    if (K + 1 < N && TakeRight(H[K + 1], H[K])) ++K;
    if (!MoveUp(H[K], Hole.Entry)) break;
    Put<Write>(H, Hole.At, H[K]);
    Hole.At = K;
  }
  return ElementOf(Hole.Entry);
}

/// SiftDown for a heap whose entries below I already satisfy the heap property: the hole goes
/// down the path of chosen children to a leaf with one TakeRight test per level, then the
/// entry moves back up while !MoveUp(Parent, Entry). Along that path no entry is after its
/// child, so for a consistent order the entries MoveUp holds for form a prefix of the path
/// and the entry ends exactly where SiftDown puts it, with the same moves. When a test
/// raises, the path is put back as it was and SiftDown runs instead, so a raising comparison
/// leaves what SiftDown leaves. Index fields are written as SiftDown's.
template <class Ahead, bool Write = true, class S, class FTakeRight, class FMoveUp>
auto* SiftDownFromBottom(std::vector<S>& H, std::int32_t I, FTakeRight TakeRight, FMoveUp MoveUp) {
  auto Move = [&H](std::size_t To, std::size_t From) { Put<Write>(H, To, H[From]); };
  const std::size_t N = H.size(), Start = static_cast<std::size_t>(I);
  const S Entry = H[Start];
  std::size_t At = Start;
  try {
    std::size_t K = 2 * At + 1;
    for (; K + 1 < N; K = 2 * At + 1) {
      // Ask for what the next levels will read. The first eight levels are read by every pop
      // and stay cached, so they skip it. Deeper, the slots four levels down and their items
      // three down: the comparison is a call, and with two levels of warning the items were
      // still in flight. Near the leaves, as SiftDown. (Written in the loop: as a function of
      // its own the compiler judges it to have no effect and drops the call.)
      if (At >= 255) {
        if (const std::size_t Far = 16 * At + 15; Far + 15 < N) {
          const char* Slots = reinterpret_cast<const char*>(H.data() + Far);
          for (std::size_t Offset = 0; Offset < 16 * sizeof(S); Offset += 64) __builtin_prefetch(Slots + Offset);
          __builtin_prefetch(Slots + 16 * sizeof(S) - 1);
          for (std::size_t G = 8 * At + 7; G < 8 * At + 15; ++G) Ahead::Touch(H[G]);
        } else {
          if (const std::size_t Near = 8 * At + 7; Near < N) {
            __builtin_prefetch(H.data() + Near);
            __builtin_prefetch(H.data() + std::min(Near + 7, N - 1));
          }
          for (std::size_t G = 4 * At + 3, End = std::min(G + 4, N); G < End; ++G) Ahead::Touch(H[G]);
        }
      }
      // A branch, not a flag added to K: its prediction lets the next levels' loads start
      // before this comparison returns, which measured faster than waiting for it.
      if (TakeRight(H[K + 1], H[K])) ++K;
      Move(At, K);
      At = K;
    }
    if (K < N) {
      Move(At, K);
      At = K;
    }
    while (At > Start) {
      const std::size_t P = (At - 1) / 2;
      if (MoveUp(H[P], Entry)) break;
      Move(At, P);
      At = P;
    }
    Put<Write>(H, At, Entry);
    return ElementOf(Entry);
  } catch (...) {
    // Every entry above the hole on the path came up one level: move them back down.
    for (; At > Start; At = (At - 1) / 2) Move(At, (At - 1) / 2);
    Put<Write>(H, Start, Entry);
  }
  return SiftDown<Ahead, Write>(H, I, TakeRight, MoveUp);
}

/// Pre-order walk from the root, left subtree first. Visit(Entry) answers 1 to stop at it,
/// 0 to go on into its children, -1 to skip its subtree. Answers the index or -1. The
/// recursion is as deep as the tree (at most 31 levels).
template <class S, class FVisit>
std::int32_t PreOrderFind(const std::vector<S>& H, std::int64_t I, FVisit& Visit) {
  if (I >= static_cast<std::int64_t>(H.size())) return -1;
  const int V = Visit(H[static_cast<std::size_t>(I)]);
  if (V > 0) return static_cast<std::int32_t>(I);
  if (V < 0) return -1;
  const std::int32_t Left = PreOrderFind(H, 2 * I + 1, Visit);
  return Left >= 0 ? Left : PreOrderFind(H, 2 * I + 2, Visit);
}

/// Takes the entry at Index out of the array: the last entry moves into the gap with its
/// Index updated (unless !Write). Answers the removed element, which the caller frees.
template <class S>
auto* TakeOut(std::vector<S>& H, std::int32_t Index, bool Write = true) {
  const std::size_t Last = H.size() - 1;
  const auto At = static_cast<std::size_t>(Index);
  auto* Removed = ElementOf(H[At]);
  if (At != Last) {
    H[At] = H[Last];
    if (Write) THeapAccess::SetIndex(ElementOf(H[At]), Index);
  }
  H.pop_back();
  return Removed;
}

}  // namespace kz::detail
