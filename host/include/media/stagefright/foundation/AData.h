#pragma once

#include <type_traits>
#include <utility>
#include <variant>

namespace android {

/** A value of one of the types Ts, or none. No two types are the same. */
template <typename... Ts>
struct AData {
    class Basic {
      public:
        /** False when it holds nothing. */
        bool used() const { return !std::holds_alternative<std::monostate>(mValue); }

        /** Replaces the value. Always true. */
        template <typename T>
        bool set(const T& data) {
            mValue.template emplace<T>(data);
            return true;
        }
        template <typename T, typename = std::enable_if_t<!std::is_lvalue_reference_v<T>>>
        bool set(T&& data) {
            mValue.template emplace<std::decay_t<T>>(std::forward<T>(data));
            return true;
        }

        /** Copies the value out if it is exactly a T; nothing is converted. */
        template <typename T>
        bool find(T* data) const {
            const T* const held = std::get_if<T>(&mValue);
            if (held == nullptr) return false;
            *data = *held;
            return true;
        }

      private:
        std::variant<std::monostate, Ts...> mValue;
    };
};

}  // namespace android
