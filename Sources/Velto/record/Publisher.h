// A list of observers who are told that something is about to change, or has changed.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace velto {

// Each send hands `Facts` to every observer. Main thread only. Observers are called in the order in
// which they subscribed; one that subscribes or unsubscribes from inside a call takes effect with
// the next send.
template <typename... Facts>
class Publisher {
public:
  using Observer = std::function<void(Facts...)>;
  using Token = std::uint64_t;

  Token subscribe(Observer observer) {
    observers_.emplace_back(++lastToken_, std::move(observer));
    return lastToken_;
  }

  void unsubscribe(Token token) {
    std::erase_if(observers_, [token](const auto& entry) { return entry.first == token; });
  }

  void send(Facts... facts) const {
    const auto observers = observers_;
    for (const auto& [token, observer] : observers)
      observer(facts...);
  }

private:
  std::vector<std::pair<Token, Observer>> observers_;
  Token lastToken_ = 0;
};

} // namespace velto
