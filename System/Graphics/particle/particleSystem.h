#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/Graphics/particle/particle.h"
#include "System/System/export.h"
#include "System/System/paramCommand.h"
#include "System/System/string.h"
#include "System/System/stringInterface.h"
#include "System/math/3D/boundingBoxAA.h"

#include <cstdint>
#include <optional>
#include <vector>

class PoolBlk;

namespace Qel {

class cFile;
class ParticleAffector;
class ParticleAffectorFactory;
class ParticleEmitter;
class ParticleEmitterFactory;

/// A pool of particles, the emitters that fill it and the affectors that change it, stepped once a frame.
///
/// It draws nothing: a renderer reads the particles, the emitters' materials and the flags. Systems are made
/// by ParticleSystemMgr, empty or as a copy of a template; templates are systems, too.
///
/// **Bound or not.** The particles of a bound system live in its own space. Those of an unbound one stay
/// behind in the world as their owner moves it, see moveParticleSystem() and setBoundExpo().
///
/// **Life.** There is no pool until the first particle, and none after an update that leaves no particle.
///
/// @code
/// ParticleSystem *const fire = ParticleSystemMgr::Instance().createSystem("fire 1", "Fire");
/// fire->fastForward(2.0f, 0.05f); // burns already when it is seen first
/// for (unsigned int i = 0; i < fire->getActiveCount(); ++i) {
///     draw(fire->getParticles()[i]);
/// }
/// @endcode
///
/// @par Limits     255 emitters, 65 535 affectors. A pool of more than mostParticles is never made: such a
/// system emits nothing.
/// @par Ownership  Owns emitters and affectors, and gives them back to their factories.
/// @par Threads    Belongs to the thread of the frame loop. Emitters, affectors and callbacks must not reset,
///                 assign or destroy the system that calls them; a quota that they set counts when the update
///                 has ended.
class QEL_API ParticleSystem : public StringInterface {
public:
    static constexpr unsigned int mostParticles = 1u << 24;
    static constexpr unsigned int mostEmitters = 255;
    static constexpr unsigned int mostAffectors = 65535;

    ParticleSystem();
    explicit ParticleSystem(String const &systemName);
    ParticleSystem(String const &systemName, String const &nameOfTemplate);

    /// Reads what _serialize() wrote. What does not arrive keeps its default.
    /// @throws Exception number 4 for an emitter or affector type that nobody has registered
    explicit ParticleSystem(cFile &file);

    /// Makes new emitters and affectors of the same types with the same parameters; no particles. Each
    /// emitter draws its own start delay. A copy that is constructed has the default limits of its time step.
    /// @throws Exception number 4 for a type that is not registered any more
    /// @{
    ParticleSystem(ParticleSystem const &other);
    ParticleSystem &operator=(ParticleSystem const &other);
    /// @}
    ~ParticleSystem() override;

    bool setParameter(String const &parameter, String const &value) override;
    virtual String const &getName() const { return name; }
    virtual void _serialize(cFile &file) const; ///< everything but the particles

    void setName(String const &newName) { name = newName; }
    void setTemplateName(String const &newName) { templateName = newName; }
    String const &getTemplateName() const { return templateName; } ///< a template's own name, for a template
    unsigned int getParticleQuota() const { return quota; }
    bool isBound() const { return bound; }
    void setBound(bool on) { bound = on; }
    float getBoundExpo() const { return boundExpo; }

    /// How particles of an unbound system come along: at 0 they stay where they are in the world; the larger
    /// it is the longer young ones go along with the system.
    void setBoundExpo(float exponent) { boundExpo = exponent; }
    bool isEmitting() const { return emitting; }
    void setEmitting(bool on) { emitting = on; }
    bool isAffecting() const { return affecting; }
    void setAffecting(bool on) { affecting = on; }
    bool isAlive() const { return alive; } ///< Were there particles at the start of the last update?
    bool isAliveEmitting() const { return alive && emitting; }
    bool getIgnoreRotation() const { return ignoreRotation; } ///< for the renderer
    void setIgnoreRotation(bool on) { ignoreRotation = on; }
    bool getSoftParticles() const { return softParticles; } ///< for the renderer: fade with depth
    void setSoftParticles(bool on) { softParticles = on; }
    unsigned int getUserData() const { return userData; } ///< the host's
    void setUserData(unsigned int data) { userData = data; }
    Particle *getParticles() const { return particles; }        ///< null without a pool
    unsigned int getActiveCount() const { return activeCount; } ///< particles in getParticles()
    cBoundingBoxAA const &getBoundingBox() const { return boundingBox; }
    float getTimeAlive() const { return timeAlive; }       ///< seconds, of clamped steps
    bool hasStreaks() const { return m_hasStreaks; }       ///< Has an emitter streaks?
    bool hasNonIntense() const { return m_hasNonIntense; } ///< Is an emitter not intense?
    unsigned short getNumEmitters() const { return static_cast<unsigned short>(emitters.size()); }
    unsigned short getNumAffectors() const { return static_cast<unsigned short>(affectors.size()); }
    void setEditorScriptModified() { editorScriptModified = true; } ///< for saveScriptDirectory()
    bool isEditorScriptModified() const { return editorScriptModified; }

    void setTimeClamp(float, float) {} ///< kept for callers; does nothing

    /// Steps everything by a time that is clamped, 0 to 0.08 seconds unless it was copied from elsewhere.
    void update(float dt);

    /// Runs updates of @p interval until @p time is passed. Nothing for a @p time of 0 or less, or an
    /// interval that does not lead there.
    void fastForward(float time, float interval);

    /// Tells an unbound system how far it has been moved; adds up until the next update.
    void moveParticleSystem(D3DXVECTOR3 const &delta);

    /// A place for a new particle, whose content is not cleared. @return null if the quota is full
    Particle *addParticle();

    /// Changes the size of the pool. All live particles are gone with the next update. During an update it
    /// waits for the end of that.
    void setParticleQuota(unsigned int newQuota);

    void reset();   ///< back to the values of a new system, with no pool; names, emitters and affectors stay
    void recheck(); ///< works hasStreaks() and hasNonIntense() out anew

    /// @return the new emitter, owned by the system; null if the factory makes none or there are 255 already
    /// @throws Exception number 4 for an unknown type
    ParticleEmitter *addEmitter(String const &type);
    ParticleEmitter *getEmitter(unsigned short i) const;    ///< null if there is no such emitter
    ParticleEmitter *findEmitter(String const &type) const; ///< the first of that type, or null

    /// Takes an emitter out, and with it the affectors of that emitter alone; the numbers of the others
    /// follow. By number it is not destroyed: it is then the caller's, and so are those affectors.
    /// @return false if there is none
    /// @{
    bool removeEmitter(unsigned int i);
    bool removeEmitter(String const &type);
    /// @}
    void removeAllEmitters();                 ///< destroys them; affectors stay
    void setEmitterData(PoolBlk const *data); ///< passed on to every emitter

    /// @return the new affector, owned by the system; null if the factory makes none or there are 65 535
    /// already
    /// @throws Exception number 4 for an unknown type
    ParticleAffector *addAffector(String const &type);
    ParticleAffector *getAffector(unsigned short i) const;    ///< null if there is no such affector
    ParticleAffector *findAffector(String const &type) const; ///< the first of that type, or null

    /// Takes an affector out. By number it is not destroyed: it is then the caller's.
    /// @return false if there is none
    /// @{
    bool removeAffector(unsigned int i);
    bool removeAffector(String const &type);
    /// @}
    void removeAllAffectors(); ///< destroys them

    String const &getMaterialName(unsigned char i) const; ///< of emitter @p i; empty if there is none
    /// Takes out all that a factory has made, as removeEmitter() does. What is not destroyed is lost.
    /// @{
    void _dropEmitters(ParticleEmitterFactory const *factory, bool destroy);
    void _dropAffectors(ParticleAffectorFactory const *factory, bool destroy);
    /// @}

    bool isMaterialModified(); ///< whether any emitter's material has been set since this was last asked
    bool isSystemModified();   ///< whether emitters or affectors have changed since this was last asked

    /// @name The script parameters
    /// @{
    class QEL_API CmdQuota : public ParamCommand {
    public:
        String doGet(void const *target) override;
        void doSet(void *target, String const &value) override;
    };
    class QEL_API CmdBound : public ParamCommand {
    public:
        String doGet(void const *target) override;
        void doSet(void *target, String const &value) override;
    };
    class QEL_API CmdBoundExpo : public ParamCommand {
    public:
        String doGet(void const *target) override;
        void doSet(void *target, String const &value) override;
    };
    class QEL_API CmdIgnoreRotation : public ParamCommand {
    public:
        String doGet(void const *target) override;
        void doSet(void *target, String const &value) override;
    };
    class QEL_API CmdSoftParticles : public ParamCommand {
    public:
        String doGet(void const *target) override;
        void doSet(void *target, String const &value) override;
    };
    static CmdQuota msQuotaCmd;
    static CmdBound msBoundCmd;
    static CmdBoundExpo msBoundExpoCmd;
    static CmdIgnoreRotation msIgnoreRotationCmd;
    static CmdSoftParticles msSoftParticlesCmd;
    /// @}

protected:
    void initParameters();
    void _initialize();
    void _initializeFrom(ParticleSystem const &source);
    void _expire(float dt);
    void _moveParticles(D3DXVECTOR3 const &delta);
    void _triggerEmitters(float dt);
    void _triggerAffectors(float dt);
    void _applyUpdates(float dt);
    void _updateBounds();
    void _removeAllAffectorsOnEmitter(unsigned char index);

private:
    void makePool();
    void freePool();
    void makeRoomForAffector();
    void compact();
    bool takeOut(unsigned int i, bool destroy);
    void noteEmitter(ParticleEmitter const &emitter);
    bool isWalkUnbroken() const;
    void step(float dt);
    void beginExpiry();
    float noteExpired(Particle *first, Particle *last);
    template <bool expires>
    void walk(float dt);

    String name;
    String templateName;
    cBoundingBoxAA boundingBox;
    std::uint32_t userData = 0;
    bool bound = true;
    float boundExpo = 0.0f;
    bool emitting = true;
    bool affecting = true;
    bool alive = false;
    bool ignoreRotation = false;
    float timeClampMin = 0.0f;
    float timeClampMax = 0.08f;
    bool m_hasStreaks = false;
    bool m_hasNonIntense = false;
    bool softParticles = false;
    std::vector<ParticleEmitter *> emitters;
    std::vector<ParticleAffector *> affectors;
    std::vector<unsigned int> expired; // ascending places of those that expired in this update
    std::uint32_t expiredUsed = 0;     // of these, given to new particles again
    std::uint32_t quota = 0;
    Particle *particles = nullptr;
    std::uint32_t activeCount = 0;
    D3DXVECTOR3 motion{0, 0, 0};
    float timeAlive = 0.0f;
    bool modified = false;
    bool editorScriptModified = false;

    std::uint32_t m_constructed = 0;      // places of the pool that hold a record
    std::vector<unsigned short> m_counts; // of particles wanted, by emitter
    D3DXVECTOR4 m_least{0, 0, 0, 0};      // of the positions, as the last walk saw them
    D3DXVECTOR4 m_most{0, 0, 0, 0};       // the same; w is the largest size
    std::optional<unsigned int> m_nextQuota;
    bool m_isStepping = false;
};

} // namespace Qel
