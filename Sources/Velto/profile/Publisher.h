// A list of observers.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace velto {

// send() calls every observer with `Facts`, in order of subscription. Subscribing or unsubscribing
// inside a call takes effect with the next send(). Main thread only.
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
