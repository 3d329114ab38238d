#pragma once

#include "System/System/export.h"
#include "System/System/string.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace Qel {

/// A named value that the console can list, read as text and set from text; see Configurable.
///
/// Construction registers the object in ConsoleVar under its name, if the name is free: the first of a name
/// owns it, and a later one works as a plain value that the console cannot see. Destruction takes the object
/// out again. Copies are never registered.
///
/// @par Threads  Made and destroyed on the main thread, as is ConsoleVar.
class QEL_API Storable_configurable {
public:
    static constexpr std::size_t textSize = 64; ///< bytes of the buffer that to_string() fills

    /// @param name   not kept in the object
    /// @param flags  the host's own; the library gives them no meaning
    Storable_configurable(String name, unsigned int flags);

    Storable_configurable(Storable_configurable const &other) : flags(other.flags) {}
    Storable_configurable &operator=(Storable_configurable const &) = default;

    virtual ~Storable_configurable();

    /// Writes the value as text.
    /// @param buffer  textSize bytes; a longer text is cut, the terminator is always written
    virtual void to_string(char *buffer) const = 0;

    /// Sets the value from text. Text that cannot be read gives the value that stands for it.
    /// @param text  null counts as empty
    virtual void from_string(char const *text) = 0;

    unsigned int getFlags() const { return flags; } ///< as at construction

protected:
    std::uint32_t flags;
};

/// A configurable's value, for host code to read and write. Neither looks at the registration.
template <typename T>
class QEL_API Base_configurable : public Storable_configurable {
public:
    Base_configurable(String name, T const &initial, unsigned int userFlags = 0)
        : Storable_configurable(std::move(name), userFlags), value(initial)
    {
    }

    T const &get() const { return value; }
    void set(T const &newValue) { value = newValue; }
    operator T const &() const { return value; }

protected:
    T value;
};

/// How a type is written as text and read from it. The library has `bool`, `int` and `float`; for a type of
/// its own a host specialises this before the first Configurable of that type:
///
/// @code
/// template <>
/// struct Qel::ConfigurableText<Quality> {
///     static Qel::String toText(Quality const &value);
///     static void fromText(Quality &value, char const *text); // text is never null
/// };
/// @endcode
template <typename T>
struct ConfigurableText;

template <>
struct QEL_API ConfigurableText<bool> {
    static String toText(bool value);                    ///< "1" or "0"
    static void fromText(bool &value, char const *text); ///< true if the number is not 0
};

template <>
struct QEL_API ConfigurableText<int> {
    static String toText(int value);                    ///< decimal
    static void fromText(int &value, char const *text); ///< 0 if there is no number
};

template <>
struct QEL_API ConfigurableText<float> {
    static String toText(float value);                    ///< six significant digits, whatever the locale
    static void fromText(float &value, char const *text); ///< 0 if there is no number
};

/// A value of the host that a console or a debug menu can reach by its name.
///
/// @code
/// Configurable<float> gravity("world.gravity", 9.81f);
///
/// float const fall = gravity * dt; // reads as a float
/// gravity = 1.62f;                 // and is set as one
/// ConsoleVar::Instance().setConfigurable("world.gravity", "3.7");
/// @endcode
///
/// Mostly a static object of the host; the order in which sources are initialised does not matter.
template <typename T>
class QEL_API Configurable : public Base_configurable<T> {
public:
    using Base_configurable<T>::Base_configurable;

    Configurable &operator=(T const &newValue)
    {
        this->value = newValue;
        return *this;
    }

    void to_string(char *buffer) const override
    {
        String const text = ConfigurableText<T>::toText(this->value);
        std::size_t const length = text.copy(buffer, Storable_configurable::textSize - 1);
        buffer[length] = '\0';
    }

    void from_string(char const *text) override
    {
        ConfigurableText<T>::fromText(this->value, text != nullptr ? text : "");
    }
};

extern template class QEL_API Base_configurable<bool>;
extern template class QEL_API Base_configurable<int>;
extern template class QEL_API Base_configurable<float>;
extern template class QEL_API Configurable<bool>;
extern template class QEL_API Configurable<int>;
extern template class QEL_API Configurable<float>;

} // namespace Qel
