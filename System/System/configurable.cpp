#include "System/System/configurable.h"

#include "System/System/consoleVar.h"
#include "System/System/stringConverter.h"

namespace Qel {

Storable_configurable::Storable_configurable(String name, unsigned int userFlags) : flags(userFlags)
{
    ConsoleVar::Instance().add(std::move(name), *this);
}

Storable_configurable::~Storable_configurable()
{
    ConsoleVar::Instance().remove(*this);
}

String ConfigurableText<bool>::toText(bool value)
{
    return String(value);
}

void ConfigurableText<bool>::fromText(bool &value, char const *text)
{
    value = StringConverter::parseInt(text) != 0;
}

String ConfigurableText<int>::toText(int value)
{
    return String(value);
}

void ConfigurableText<int>::fromText(int &value, char const *text)
{
    value = StringConverter::parseInt(text);
}

String ConfigurableText<float>::toText(float value)
{
    return String(value);
}

void ConfigurableText<float>::fromText(float &value, char const *text)
{
    value = StringConverter::parseReal(text);
}

template class Base_configurable<bool>;
template class Base_configurable<int>;
template class Base_configurable<float>;
template class Configurable<bool>;
template class Configurable<int>;
template class Configurable<float>;

} // namespace Qel
