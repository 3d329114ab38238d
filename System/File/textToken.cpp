#include "System/File/textToken.h"

#include "System/System/stringConverter.h"

namespace Qel {

int TextToken::convertToInt32() const
{
    return StringConverter::parseInt(m_text);
}

unsigned short TextToken::convertToU16() const
{
    return static_cast<unsigned short>(convertToInt32());
}

int TextToken::convertHexToInt32() const
{
    unsigned int const value = m_type == TOK_STRING ? StringConverter::parseHex(convertToString())
                                                    : StringConverter::parseHex(m_text);
    return static_cast<int>(value);
}

float TextToken::convertToFloat32() const
{
    return StringConverter::parseReal(m_text);
}

String TextToken::convertToString() const
{
    if (m_type != TOK_STRING || m_text.empty()) {
        return m_text;
    }
    bool const closed = m_text.size() > 1 && m_text.back() == '"';
    return String(m_text, 1, m_text.size() - (closed ? 2 : 1));
}

} // namespace Qel
