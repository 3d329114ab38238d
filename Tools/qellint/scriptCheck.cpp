#include "scriptCheck.h"

#include "System/File/fileMem.h"
#include "System/File/textTokenizer.h"
#include "System/Graphics/particle/particleSystem.h"
#include "System/Graphics/particle/particleSystemMgr.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <optional>
#include <set>

namespace {

using Qel::String;
using Qel::TextToken;

// Comments become blanks, so that the line of each token can be told.
std::string withoutComments(std::string text)
{
    enum { CODE, STRING, LINE, BLOCK } state = CODE;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char const next = i + 1 < text.size() ? text[i + 1] : ' ';
        if (state == CODE && text[i] == '/' && (next == '/' || next == '*')) {
            state = next == '/' ? LINE : BLOCK;
            text[i] = text[i + 1] = ' ';
            ++i;
        } else if (state == BLOCK && text[i] == '*' && next == '/') {
            state = CODE;
            text[i] = text[i + 1] = ' ';
            ++i;
        } else if (state == LINE && text[i] == '\n') {
            state = CODE;
        } else if (state == LINE || state == BLOCK) {
            text[i] = text[i] == '\n' ? '\n' : ' ';
        } else if (text[i] == '"') {
            state = state == STRING ? CODE : STRING;
        }
    }
    return text;
}

bool isNumber(char const *&text, float &value)
{
    char *end = nullptr;
    value = std::strtof(text, &end);
    bool const isOne = end != text && std::isfinite(value);
    text = end;
    return isOne;
}

bool isRest(char const *text)
{
    return text[String(text).find_first_not_of(" \t") == String::npos ? String(text).size() : 0] == 0;
}

/// What a value is expected to be; empty if it is that.
std::string mistakeOf(Qel::ParameterType type, String const &value)
{
    char const *text = value.c_str();
    float number = 0;
    switch (type) {
    case Qel::PARAM_BOOL:
        return value == "true" || value == "false" || value == "1" || value == "0" ? "" : "true or false";
    case Qel::PARAM_FLOAT:
        return isNumber(text, number) && isRest(text) ? "" : "a number";
    case Qel::PARAM_VEC3:
        return isNumber(text, number) && isNumber(text, number) && isNumber(text, number) && isRest(text)
                   ? ""
                   : "three numbers";
    case Qel::PARAM_INT:
    case Qel::PARAM_UINT:
        return isNumber(text, number) && isRest(text) && number == std::floor(number) &&
                       (type == Qel::PARAM_INT || number >= 0)
                   ? ""
                   : "a whole number";
    default:
        return "";
    }
}

/// Limits of sense, of parameters by name. Plugins use the same names for the same things.
struct Limit {
    float least;
    float most;
};
constexpr float any = 1e30f;

std::map<std::string, Limit> const limits = {
    {"quota", {1, Qel::ParticleSystem::mostParticles}},
    {"size", {0, any}},
    {"size_max", {0, any}},
    {"emissionangle", {-360, 360}},
    {"emissionanglemin", {-360, 360}},
    {"emission_rate", {0, 1e6f}},
    {"time_to_live_min", {0, any}},
    {"time_to_live_max", {0, any}},
    {"duration_min", {0, any}},
    {"duration_max", {0, any}},
    {"repeat_delay", {0, any}},
    {"repeat_delay_min", {0, any}},
    {"repeat_delay_max", {0, any}},
    {"start_delay_min", {0, any}},
    {"start_delay_max", {0, any}},
    {"animSpeed", {0, any}},
    {"animFrames", {1, 255}},
    {"brightness", {0, 1}},
    {"streak_length", {0, any}},
    {"streak_size", {0, any}},
    {"onemitter", {0, 255}},
};

class Check {
public:
    explicit Check(std::string const &script)
        : m_text(withoutComments(script)), m_file(static_cast<unsigned int>(m_text.size()),
                                                  reinterpret_cast<unsigned char const *>(m_text.data())),
          m_tokens(m_file)
    {
    }

    std::vector<Finding> run()
    {
        for (TextToken token = take(); !token.isEnd(); token = take()) {
            if (token.isExactText("version")) {
                take();
            } else if (token.isExactText("particlesystem")) {
                system();
            } else {
                find("unknown keyword " + said(token));
            }
        }
        return std::move(m_findings);
    }

private:
    using Dictionary = Qel::ParamDictionary const;

    TextToken take()
    {
        if (m_again) {
            TextToken token = std::move(*m_again);
            m_again.reset();
            return token;
        }
        m_line = m_tokens.getLine() + 1 + m_linesInStrings;
        TextToken token = m_tokens.getNextToken();
        String const &text = token.getExactText();
        m_linesInStrings += static_cast<unsigned int>(std::count(text.begin(), text.end(), '\n'));
        return token;
    }

    static std::string said(TextToken const &token)
    {
        return '\'' + std::string(token.getExactText()) + '\'';
    }

    void find(std::string text) { m_findings.push_back({m_line, std::move(text)}); }

    bool takeBrace(std::string const &where)
    {
        TextToken const brace = take();
        if (brace.getType() == Qel::TOK_LBRACE) {
            return true;
        }
        find("'{' is missing after " + where);
        return false;
    }

    void system()
    {
        TextToken const token = take();
        std::string const name = token.convertToString().c_str();
        if (token.isEnd() || token.getType() == Qel::TOK_LBRACE) {
            find("a template without a name");
        } else if (!m_names.insert(name).second) {
            find("template '" + name + "' is there already in this file");
        }
        if (token.getType() != Qel::TOK_LBRACE && !takeBrace('\'' + name + '\'')) {
            return;
        }
        Qel::ParticleSystem const sample; // makes the dictionary
        Dictionary *const dictionary = Qel::StringInterface::getParamDictionary("ParticleSystem", true);
        unsigned int const begin = m_line;
        m_emitters = 0;
        m_emittersMeant.clear();
        for (;;) {
            TextToken const one = take();
            if (one.isEnd() || one.isExactText("particlesystem")) {
                m_again = one;
                find("'}' of the template of line " + std::to_string(begin) + " is missing");
                break;
            }
            if (one.getType() == Qel::TOK_RBRACE) {
                break;
            }
            if (one.isExactText("emitter")) {
                block("emitter");
                ++m_emitters;
            } else if (one.isExactText("affector")) {
                block("affector");
            } else {
                parameter(one, dictionary, "template '" + name + '\'');
            }
        }
        for (auto const &[line, number] : m_emittersMeant) {
            if (number != 255 && number >= m_emitters) {
                m_findings.push_back({line, "'onemitter' " + std::to_string(number) + ": the template has " +
                                                std::to_string(m_emitters) + " emitters"});
            }
        }
        std::stable_sort(m_findings.begin(), m_findings.end(),
                         [](Finding const &a, Finding const &b) { return a.line < b.line; });
    }

    // The dictionary of a type, which its first instance makes; null for an unknown type.
    static Dictionary *dictionaryOf(bool isEmitter, String const &type)
    {
        Qel::ParticleSystemMgr &manager = Qel::ParticleSystemMgr::Instance();
        Qel::StringVector const types =
            isEmitter ? manager.getEmitterFactories() : manager.getAffectorFactories();
        if (std::find(types.begin(), types.end(), type) == types.end()) {
            return nullptr;
        }
        Qel::ParticleSystem sample;
        isEmitter ? static_cast<void>(sample.addEmitter(type)) : static_cast<void>(sample.addAffector(type));
        return Qel::StringInterface::getParamDictionary((isEmitter ? "Emitter" : "Affector") + type, true);
    }

    void block(std::string const &kind)
    {
        String const type = take().convertToString();
        Dictionary *const dictionary = dictionaryOf(kind == "emitter", type);
        std::string const where = kind + " '" + type.c_str() + '\'';
        if (dictionary == nullptr) {
            find("unknown type of " + where);
        }
        unsigned int const begin = m_line;
        if (!takeBrace(where)) {
            return;
        }
        for (;;) {
            TextToken const one = take();
            if (one.isEnd() || one.isExactText("emitter") || one.isExactText("affector") ||
                one.isExactText("particlesystem")) {
                find("'}' of the " + kind + " of line " + std::to_string(begin) + " is missing");
                m_again = one;
                return;
            }
            if (one.getType() == Qel::TOK_RBRACE) {
                return;
            }
            parameter(one, dictionary, where);
        }
    }

    void parameter(TextToken const &token, Dictionary *dictionary, std::string const &where)
    {
        if (token.getType() != Qel::TOK_STRING) {
            find(said(token) + " stands outside quotes");
            return;
        }
        if (token.getExactText().find('\n') != String::npos) {
            find("a line feed in a string: a quote is missing");
            return;
        }
        Qel::StringVector pieces;
        if (token.convertToString().split(pieces, "\t ", 1) < 2) {
            // An unset material is written that way.
            if (pieces.empty() || pieces[0] != "material") {
                find(said(token) + " has no value");
            }
            return;
        }
        if (dictionary == nullptr) {
            return;
        }
        auto const &all = dictionary->getParameters();
        auto const def =
            std::find_if(all.begin(), all.end(), [&](auto const &one) { return one.name == pieces[0]; });
        std::string const name = '\'' + std::string(pieces[0]) + '\'';
        if (def == all.end()) {
            find("unknown parameter " + name + " of " + where);
            return;
        }
        if (std::string const expected = mistakeOf(def->paramType, pieces[1]); !expected.empty()) {
            find(name + " is '" + pieces[1].c_str() + "' and not " + expected);
            return;
        }
        float const number = std::strtof(pieces[1].c_str(), nullptr);
        if (auto const limit = limits.find(pieces[0].c_str());
            limit != limits.end() && !(number >= limit->second.least && number <= limit->second.most)) {
            find(name + " makes no sense as " + pieces[1].c_str());
        } else if (pieces[0] == "onemitter") {
            m_emittersMeant.push_back({m_line, static_cast<unsigned int>(number)});
        }
    }

    std::string m_text;
    Qel::cFileMem m_file;
    Qel::TextTokenizer m_tokens;
    std::optional<TextToken> m_again; // ended what lacks its brace, and begins what follows
    unsigned int m_line = 1;
    unsigned int m_linesInStrings = 0;
    unsigned int m_emitters = 0;
    std::vector<std::pair<unsigned int, unsigned int>> m_emittersMeant; // by line
    std::set<std::string> m_names;
    std::vector<Finding> m_findings;
};

} // namespace

std::vector<Finding> checkParticleScript(std::string const &script)
{
    return Check(script).run();
}
