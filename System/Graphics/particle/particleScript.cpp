#include "System/File/fileSystem.h"
#include "System/File/fileTempMem.h"
#include "System/File/textTokenizer.h"
#include "System/Graphics/particle/particleAffector.h"
#include "System/Graphics/particle/particleEmitter.h"
#include "System/Graphics/particle/particleSystemMgr.h"
#include "System/System/logManager.h"

#include "Support/OS/file.h"

#include <algorithm>

namespace Qel {

namespace {

constexpr int formatVersion = 1;

String firstLine()
{
    String line;
    line.sprintf("version %d\n", formatVersion);
    return line;
}

/// A parameter's name and its value: what stands ahead of the first run of blanks, and the rest.
bool splitLine(String const &text, StringVector &pieces)
{
    return text.split(pieces, "\t ", 1) >= 2;
}

// The parameters of a block of an emitter or an affector: only quoted strings count there.
template <class Part>
void parseBlock(Part *part, char const *complaint, String const &type, TextTokenizer &tokens)
{
    StringVector pieces;
    for (TextToken token = tokens.getNextToken(); token.getType() != TOK_RBRACE && !token.isEnd();
         token = tokens.getNextToken()) {
        if (token.getType() != TOK_STRING) {
            continue;
        }
        if (!splitLine(token.convertToString(), pieces)) {
            if (LogManager::checkDefLogLevel(1)) {
                LogManager::defLevelMessage("   - %s [error]\n", pieces.empty() ? "" : pieces[0].c_str());
            }
        } else if (!part->setParameter(pieces[0], pieces[1])) {
            logMessage(complaint + token.getExactText() + "' for emitter " + type + "\n", 3);
        } else if (LogManager::checkDefLogLevel(1)) {
            LogManager::defLevelMessage("   - %s %s\n", pieces[0].c_str(), pieces[1].c_str());
        }
    }
}

// The lines of all parameters that a type's dictionary has; the values stand below each other.
template <class Part>
void writeBlock(String &out, char const *keyword, char const *dictionaryPrefix, Part &part)
{
    constexpr std::size_t valueColumn = 24;
    String const type = part.getType();
    out += String("  ") + keyword + " " + type + "\n  {\n";
    if (ParamDictionary const *const dictionary =
            StringInterface::getParamDictionary(dictionaryPrefix + type, true)) {
        for (ParameterDef const &parameter : dictionary->getParameters()) {
            String line = "    \"" + parameter.name;
            line.resize(std::max(line.size(), valueColumn), ' ');
            out += line + "  " + part.getParameter(parameter.name) + "\"\n";
        }
    }
    out += "\n  }\n";
}

// A template's name comes from a script: it must not lead to another folder.
String fileNameOf(String const &templateName)
{
    String name = templateName;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '/' || c == '\\' || c == ':' || c == 0; }, '_');
    return name;
}

} // namespace

bool ParticleSystemMgr::parseScript(String const &path)
{
    return parseScript(path, false);
}

bool ParticleSystemMgr::parseScript(String const &path, bool reload)
{
    if (!reload) {
        scriptFiles.push_back(path);
    }
    cFileTempMem file;
    if (!file.open(path.c_str())) {
        return false;
    }
    TextTokenizer tokens(file);
    tokens.skipComment_oneLine(true);
    tokens.skipComment_block(true);
    for (TextToken token = tokens.getNextToken(); !token.isEnd(); token = tokens.getNextToken()) {
        if (token.isExactText("version")) {
            tokens.getNextToken(); // there is one version so far
        } else if (token.isExactText("particlesystem")) {
            parseTemplate(tokens, path, reload);
        }
    }
    return true;
}

void ParticleSystemMgr::parseTemplate(TextTokenizer &tokens, String const &path, bool reload)
{
    String const name = tokens.getNextToken().convertToString();
    logMessage("registering particleTemplate: '" + name + "'\n", 2);
    ParticleSystem &system = *createTemplate(name);
    system.setTemplateName(name);
    if (!reload) {
        templateFiles[name] = path;
    }
    tokens.readUntilToken(TOK_LBRACE);
    StringVector pieces;
    for (TextToken token = tokens.getNextToken(); token.getType() != TOK_RBRACE && !token.isEnd();
         token = tokens.getNextToken()) {
        if (token.isExactText("emitter")) {
            parseEmitter(tokens.getNextToken().convertToString(), tokens, system);
            continue;
        }
        if (token.isExactText("affector")) {
            parseAffector(tokens.getNextToken().convertToString(), tokens, system);
            continue;
        }
        String const text = token.convertToString();
        if (!splitLine(text, pieces)) {
            logMessage("Missing Parameter in line: '" + text + "' in " + system.getName() + "\n", 3);
        } else if (!system.setParameter(pieces[0], pieces[1])) {
            logMessage("Bad particle system attribute line: '" + text + "' in " + system.getName() + "\n", 3);
        } else if (LogManager::checkDefLogLevel(1)) {
            LogManager::defLevelMessage(" - %s %s\n", pieces[0].c_str(), pieces[1].c_str());
        }
    }
}

void ParticleSystemMgr::parseEmitter(String const &type, TextTokenizer &tokens, ParticleSystem &system)
{
    logMessage(" * emitter: '" + type + "'\n", 1);
    if (ParticleEmitter *const emitter = system.addEmitter(type)) {
        parseBlock(emitter, "Bad particle emitter attribute line: '", type, tokens);
    }
}

void ParticleSystemMgr::parseAffector(String const &type, TextTokenizer &tokens, ParticleSystem &system)
{
    logMessage(" * affector: '" + type + "'\n", 1);
    if (ParticleAffector *const affector = system.addAffector(type)) {
        parseBlock(affector, "Bad particle affector attribute line: '", type, tokens);
    }
}

bool ParticleSystemMgr::parseScriptDirectory(String const &dir)
{
    StringVector paths;
    FileSystem::getFiles(dir + "*.*", paths, "*.particle", true);
    for (String const &path : paths) {
        parseScript(path, false);
    }
    return !paths.empty();
}

bool ParticleSystemMgr::saveScript_intern(String &out, ParticleSystem &system) const
{
    out = "\nparticlesystem \"" + system.getTemplateName() + "\"\n{\n";
    for (ParameterDef const &parameter : system.getParameters()) {
        out += "  \"" + parameter.name + "  " + system.getParameter(parameter.name) + "\"\n";
    }
    out += "\n";
    for (unsigned short i = 0; i < system.getNumEmitters(); ++i) {
        writeBlock(out, "emitter", "Emitter", *system.getEmitter(i));
    }
    for (unsigned short i = 0; i < system.getNumAffectors(); ++i) {
        writeBlock(out, "affector", "Affector", *system.getAffector(i));
    }
    out += "\n}\n";
    return true;
}

bool ParticleSystemMgr::saveScript(String const &path)
{
    String text = firstLine();
    String block;
    for (auto &entry : templates) {
        saveScript_intern(block, entry.second);
        text += block;
    }
    os::replaceFile(path.c_str(), text.data(), text.size());
    return true;
}

bool ParticleSystemMgr::saveScriptDirectory(String const &dir, bool modifiedOnly)
{
    for (auto &entry : templates) {
        ParticleSystem &system = entry.second;
        if (modifiedOnly && !system.isEditorScriptModified()) {
            continue;
        }
        String const path = dir + fileNameOf(system.getTemplateName()) + ".particle";
        if (std::find(scriptFiles.begin(), scriptFiles.end(), path) == scriptFiles.end()) {
            scriptFiles.push_back(path);
        }
        String block;
        saveScript_intern(block, system);
        String const text = firstLine() + block;
        os::replaceFile(path.c_str(), text.data(), text.size());
    }
    return true;
}

void ParticleSystemMgr::rebind(String const &templateName)
{
    bool const isTold = LogManager::checkDefLogLevel(1);
    if (isTold) {
        LogManager::defLevelMessage("ParticleSystemMgr::rebind()\n");
    }
    auto const reload = [&](String const &path) {
        parseScript(path, true);
        if (isTold) {
            LogManager::defLevelMessage("- reload %s\n", path.c_str());
        }
    };
    if (templateName.empty()) {
        templates.clear();
        for (String const &path : std::vector<String>(scriptFiles)) {
            reload(path);
        }
    } else if (auto const place = templateFiles.find(templateName); place != templateFiles.end()) {
        reload(String(place->second));
    }
    for (auto const &entry : systems) {
        ParticleSystem &system = *entry.second;
        ParticleSystem const *const from = getTemplate(system.getTemplateName());
        bool const isMeant =
            from != nullptr && (templateName.empty() || templateName == system.getTemplateName());
        if (isTold) {
            LogManager::defLevelMessage(isMeant ? "- name='%s' (template='%s')\n"
                                                : "- name='%s' (template='%s') unknown\n",
                                        system.getName().c_str(), system.getTemplateName().c_str());
        }
        if (isMeant) {
            String const name = system.getName();
            system = *from;
            system.setName(name);
        }
    }
}

} // namespace Qel
