// Range-for over every container of the library through its enumerator: a container offers
// GetEnumerator() (answering the enumerator by value, as std::unique_ptr or as TIntfPtr) and
// the enumerator MoveNext() and GetCurrent(); this adapter supplies begin() and end().
#pragma once

#include <concepts>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

namespace kz {

namespace detail {

template <class T>
concept EnumeratorHandle = requires(T& E) {
  { (*E).MoveNext() } -> std::convertible_to<bool>;
  (*E).GetCurrent();
};

template <class T>
decltype(auto) EnumeratorOf(T& Holder) {
  if constexpr (EnumeratorHandle<T>)
    return *Holder;  // a smart pointer to the enumerator
  else
    return (Holder);  // the enumerator itself
}

}  // namespace detail

/// A container that range-for can walk: it hands out an enumerator.
template <class C>
concept Enumerable = requires(C& Container) { Container.GetEnumerator(); };

/// An input iterator that drives an enumerator; compares equal to the sentinel once MoveNext
/// has answered false. The enumerator lives inside the iterator, so the walk owns it.
template <class THolder>
class TEnumeratorIterator {
 public:
  using difference_type = std::ptrdiff_t;
  using value_type = std::remove_cvref_t<decltype(detail::EnumeratorOf(std::declval<THolder&>()).GetCurrent())>;

  explicit TEnumeratorIterator(THolder Holder) : FHolder(std::move(Holder)) { Step(); }
  TEnumeratorIterator(TEnumeratorIterator&&) = default;
  TEnumeratorIterator& operator=(TEnumeratorIterator&&) = default;

  decltype(auto) operator*() const { return detail::EnumeratorOf(FHolder).GetCurrent(); }
  TEnumeratorIterator& operator++() {
    Step();
    return *this;
  }
  void operator++(int) { Step(); }
  friend bool operator==(const TEnumeratorIterator& It, std::default_sentinel_t) { return It.FDone; }

 private:
  void Step() { FDone = !detail::EnumeratorOf(FHolder).MoveNext(); }

  mutable THolder FHolder;
  bool FDone = false;
};

template <Enumerable C>
auto begin(C& Container) {
  return TEnumeratorIterator<decltype(Container.GetEnumerator())>(Container.GetEnumerator());
}
template <Enumerable C>
std::default_sentinel_t end(C&) {
  return {};
}

}  // namespace kz
