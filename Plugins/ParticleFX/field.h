#pragma once

#include "System/File/file.h"
#include "System/System/paramCommand.h"
#include "System/System/parameterDef.h"
#include "System/System/stringConverter.h"
#include "System/System/stringInterface.h"

#include "Support/D3DX/d3dx9math.h"

#include <type_traits>

namespace fx {

template <class Class, class Value>
Class classOf(Value Class::*);

template <class Class, class Value>
Value valueOf(Value Class::*);

/// A script parameter that is a field of the object: @p field is a pointer to a bool, float or vector.
template <auto field>
class FieldCommand final : public Qel::ParamCommand {
    using Class = decltype(classOf(field));
    using Value = decltype(valueOf(field));

public:
    Qel::String doGet(void const *target) override
    {
        auto const *const object =
            static_cast<Class const *>(static_cast<Qel::StringInterface const *>(target));
        return Qel::StringConverter::toString(object->*field);
    }

    void doSet(void *target, Qel::String const &text) override
    {
        auto *const object = static_cast<Class *>(static_cast<Qel::StringInterface *>(target));
        if constexpr (std::is_same_v<Value, bool>) {
            object->*field = Qel::StringConverter::parseBool(text);
        } else if constexpr (std::is_same_v<Value, float>) {
            object->*field = Qel::StringConverter::parseReal(text);
        } else {
            object->*field = Qel::StringConverter::parseVector3d(text);
        }
    }

    static constexpr Qel::ParameterType type = std::is_same_v<Value, bool>    ? Qel::PARAM_BOOL
                                               : std::is_same_v<Value, float> ? Qel::PARAM_FLOAT
                                                                              : Qel::PARAM_VEC3;
};

/// Enters a field as a parameter of the object's dictionary.
template <auto field>
void addField(Qel::ParamDictionary &dictionary, char const *name, char const *description)
{
    static FieldCommand<field> command;
    dictionary.addParameter({name, description, command.type}, &command);
}

/// The two ways of a stream: a type lists its fields once, and each is written, or read where it arrives.
struct Writer {
    Qel::cFile &file;

    void operator()(float value) { file.write_float(value); }
    void operator()(bool value) { file.write_8(static_cast<unsigned char>(value)); }
    void operator()(D3DXVECTOR3 const &value) { file.write_vec3d(value); }
};

struct Reader {
    Qel::cFile &file;

    void operator()(float &value) { file.read_float(value); }
    void operator()(bool &value)
    {
        unsigned char byte;
        if (file.read_8(byte)) {
            value = byte != 0;
        }
    }
    void operator()(D3DXVECTOR3 &value) { file.read_vec3d(value); }
};

} // namespace fx
