// The relational operators of a key, all from its compare(a, b), which tells -1, 0 or 1.
#ifndef ETHERCATOBJECT_KEYORDER_H
#define ETHERCATOBJECT_KEYORDER_H

#include <type_traits>

// bool for a key, nothing for anything else.
template <class KEY>
using ORDER_OF =
    std::enable_if_t<std::is_same_v<decltype(&KEY::compare), int (*)(const KEY&, const KEY&)>, bool>;

template <class KEY> ORDER_OF<KEY> operator==(const KEY& a, const KEY& b) {
  return KEY::compare(a, b) == 0;
}
template <class KEY> ORDER_OF<KEY> operator!=(const KEY& a, const KEY& b) {
  return KEY::compare(a, b) != 0;
}
template <class KEY> ORDER_OF<KEY> operator<(const KEY& a, const KEY& b) {
  return KEY::compare(a, b) < 0;
}
template <class KEY> ORDER_OF<KEY> operator>(const KEY& a, const KEY& b) {
  return KEY::compare(a, b) > 0;
}
template <class KEY> ORDER_OF<KEY> operator<=(const KEY& a, const KEY& b) {
  return KEY::compare(a, b) <= 0;
}
template <class KEY> ORDER_OF<KEY> operator>=(const KEY& a, const KEY& b) {
  return KEY::compare(a, b) >= 0;
}

#endif
