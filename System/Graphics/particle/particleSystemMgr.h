#pragma once

#include "System/Graphics/particle/particleSystem.h"
#include "System/Patterns/tSingleton.h"
#include "System/System/export.h"
#include "System/System/frameListener.h"
#include "System/System/string.h"
#include "System/System/stringVector.h"

#include <map>
#include <vector>

namespace Qel {

class cFile;
class ParticleAffector;
class ParticleAffectorFactory;
class ParticleEmitter;
class ParticleEmitterFactory;
class ParticleSystemMgr;
class TextTokenizer;

extern template class QEL_API tSingleton<ParticleSystemMgr>;

/// The one entry to particles: the types that plugins bring, the templates that scripts define, and the live
/// systems that a game makes of them.
///
/// Root makes it. A host adds it to Root as a frame listener, and it then steps all live systems when a frame
/// starts.
///
/// @code
/// ParticleSystemMgr &particles = ParticleSystemMgr::Instance();
/// particles.parseScriptDirectory("media/particles/");
/// root.addFrameListener(&particles);
/// ParticleSystem *const smoke = particles.createSystem("chimney", "Smoke");
/// ...
/// particles.destroySystem(smoke);
/// @endcode
///
/// A script holds templates. Parameters stand in double quotes, one each; comments are those of C++:
///
/// @code{.unparsed}
/// version 1
/// particlesystem "Smoke"
/// {
///   "quota 200"
///   emitter Point
///   {
///     "emission_rate 20"
///     "direction 0 1 0"
///   }
///   affector Scale
///   {
///     "rate 0.5"
///   }
/// }
/// @endcode
///
/// @par Ownership  Owns templates and registered systems, but not the factories. Systems that are still there
///                 when it dies are left alone: the host destroys them before.
/// @par Threads    Belongs to the thread of the frame loop, with all systems.
class QEL_API ParticleSystemMgr final : public tSingleton<ParticleSystemMgr>, public FrameListener {
public:
    ParticleSystemMgr();
    ~ParticleSystemMgr();

    ParticleSystemMgr(ParticleSystemMgr const &) = delete;
    ParticleSystemMgr &operator=(ParticleSystemMgr const &) = delete;

    bool frameStarted(FrameEvent const &event) override; ///< update() by the frame's time. @return true

    void initialize() {} ///< kept for callers; does nothing

    void setTimeFactor(float factor); ///< kept for the host; nothing below 0, and no step goes by it
    float getTimeFactor() const { return timeFactor; }

    void update(float dt); ///< steps every registered system, in the order of their names

    /// @name Types
    /// @{

    /// Registers a type under the factory's getType(), in place of an earlier one. One that a plugin
    /// registers when it starts goes with the plugin, if not before. What it has made and is still in a
    /// template or a registered system is then dropped, but not destroyed.
    void addEmitterFactory(ParticleEmitterFactory *factory);
    void addAffectorFactory(ParticleAffectorFactory *factory);

    /// Takes a type back, with all that is of it in templates and registered systems. A plugin calls it when
    /// it stops, while its factory still stands: it destroys them.
    /// @{
    void removeEmitterFactory(ParticleEmitterFactory *factory);
    void removeAffectorFactory(ParticleAffectorFactory *factory);
    /// @}
    StringVector getEmitterFactories() const;  ///< the types, sorted
    StringVector getAffectorFactories() const; ///< the types, sorted

    /// @throws Exception number 4 for an unknown type
    /// @{
    ParticleEmitter *_createEmitter(String const &type);
    ParticleEmitter *_createEmitter(String const &type, cFile &file);
    ParticleAffector *_createAffector(String const &type);
    ParticleAffector *_createAffector(String const &type, cFile &file);
    /// @}
    void _destroyEmitter(ParticleEmitter *emitter);    ///< through its factory; null is allowed
    void _destroyAffector(ParticleAffector *affector); ///< through its factory; null is allowed
    /// @}

    /// @name Live systems
    /// @{

    /// Makes an empty system. If the name is taken the new one is returned but not registered: it is then
    /// never stepped, and the caller's to delete.
    ParticleSystem *createSystem(String const &name, unsigned int quota);

    /// Makes a system like a template. Its own name is then the template's; @p name is what getSystem() goes
    /// by.
    /// @throws Exception number 4 for an unknown template, or for a type in it that is not registered any
    /// more
    ParticleSystem *createSystem(String const &name, String const &templateName);
    void destroySystem(ParticleSystem *system);    ///< nothing for one that is not registered
    ParticleSystem *getSystem(String const &name); ///< null for an unknown name
    int getParticleSystemCount() const { return static_cast<int>(systems.size()); }
    String getParticleSystemList() const; ///< the names, a line feed after each
    /// @}

    /// @name Templates
    /// Pointers to templates stay valid until the template is destroyed or all are reloaded.
    /// @{
    ParticleSystem *getTemplate(String const &name); ///< null for an unknown name
    void addTemplate(String const &name,
                     ParticleSystem const &system);     ///< a copy, in place of an earlier one
    ParticleSystem *createTemplate(String const &name); ///< an empty one, in place of an earlier one
    void destroyTemplate(String const &name);           ///< systems made from it stay
    int getParticleTemplateCount() const { return static_cast<int>(templates.size()); }
    String getParticleTemplateList() const; ///< the names, a line feed after each
    /// @}

    /// @name Scripts
    /// @{

    /// Reads the templates of a script; a bad line is logged and passed over.
    /// @return false if the file cannot be opened
    /// @throws Exception number 4 for an unknown type; what has been read up to there stays
    bool parseScript(String const &path);

    /// Reads all files of a folder and those below it that end in ".particle".
    /// @param dir  with its separator at the end
    /// @return false if there are none
    bool parseScriptDirectory(String const &dir);

    /// Writes all templates into one script, aside first. @return true, always
    bool saveScript(String const &path);

    /// Writes each template into a script of its own, named after it; separators in a name become '_'.
    /// @param modifiedOnly  those alone that ParticleSystem::setEditorScriptModified() has marked
    /// @return true, always
    bool saveScriptDirectory(String const &dir, bool modifiedOnly);

    /// Reads scripts again and makes the live systems like the new templates; their particles are gone.
    /// @param templateName  the one template, with the script it stands in; "" for all
    /// @throws Exception number 4 for an unknown type in a script
    void rebind(String const &templateName);
    /// @}

    /// @name Binary templates
    /// @{
    void SerializeTemplates(String path) const; ///< all templates into a file, written aside first

    /// Replaces all templates by those of a file.
    /// @return false if it cannot be read, or ends early; all templates are then as they were
    /// @throws Exception number 4 for a type that is not registered; all templates are then as they were
    bool DeserializeTemplates(String path);
    /// @}

private:
    bool parseScript(String const &path, bool reload);
    void parseTemplate(TextTokenizer &tokens, String const &path, bool reload);
    void parseEmitter(String const &type, TextTokenizer &tokens, ParticleSystem &system);
    void parseAffector(String const &type, TextTokenizer &tokens, ParticleSystem &system);
    bool saveScript_intern(String &out, ParticleSystem &system) const;
    template <class Operation>
    void forEachSystem(Operation const &operation);
    ParticleEmitterFactory &emitterFactory(String const &type) const;
    ParticleAffectorFactory &affectorFactory(String const &type) const;

    std::map<String, ParticleSystem> templates;
    std::map<String, ParticleSystem *> systems;
    std::map<String, ParticleEmitterFactory *> emitterFactories;
    std::map<String, ParticleAffectorFactory *> affectorFactories;
    std::vector<String> scriptFiles;
    std::map<String, String> templateFiles; // template to script
    float timeFactor = 1.0f;
};

} // namespace Qel
