#pragma once

#include "System/Patterns/tSingleton.h"
#include "System/System/export.h"

#include <cstdint>

namespace Qel {

class ProcessorInfo;
extern template class QEL_API tSingleton<ProcessorInfo>;

/// What ProcessorInfo found out.
struct sCPUInfo {
    std::uint32_t size = 0;        ///< of this record, once it has been filled
    std::uint32_t flags = 0;       ///< a bit for each of ProcessorInfo's has-questions
    std::uint8_t logicalCpus = 0;  ///< logical processors of the machine, as worked out from the packages
    std::uint8_t physicalCpus = 0; ///< processor packages
    char vendor[32] = {};          ///< ends with a zero
    char serial[32] = {};          ///< empty if there is none
    char name[70] = {};            ///< the brand, up to 48 characters; leading blanks stay
    std::int64_t cycles = 0;       ///< Hz, see ProcessorInfo::calculateClockSpeed()
};

/// Asks the processor once, when it is made, what it can do, what it is called and how many there are.
///
/// Root makes one before everything that counts time. On a processor that can not be asked, all questions
/// have the answer no, and the vendor is "Generic_x86".
///
/// @par Threads  Made on the main thread; read on any.
class QEL_API ProcessorInfo : public tSingleton<ProcessorInfo> {
public:
    ProcessorInfo();

    /// Fills the record.
    /// @param force  also if it has been filled already
    void init(bool force);

    sCPUInfo const *getCpuInfo() const { return &m_info; }

    bool hasRDTSC() const { return has(0); } ///< a time stamp counter
    bool hasCMOV() const { return has(1); }
    bool hasFCMOV() const { return has(2); }
    bool hasSSE() const { return has(3); }
    bool hasSSE2() const { return has(4); }
    bool has3DNow() const { return has(5); }
    bool hasMMX() const { return has(6); }
    bool hasHT() const { return has(7); } ///< several logical processors in a package, Intel's only
    bool hasSSE3() const { return has(8); }
    bool hasSpeedstep() const { return has(9); }
    bool hasThermalMonitor() const { return has(10); }
    bool isIA64() const { return has(11); }
    bool hasCpuSerial() const { return has(12); }
    bool hasFPU() const { return has(13); }
    bool hasACPI() const { return has(14); }

    std::int64_t getCycles() const { return m_info.cycles; } ///< Hz
    float getMHZ() const { return static_cast<float>(static_cast<double>(m_info.cycles) * 1e-6); }
    float getGHZ() const { return static_cast<float>(static_cast<double>(m_info.cycles) * 1e-9); }
    char const *getVendor() const { return m_info.vendor; }
    char const *getCpuSerial() const { return m_info.serial; }
    char const *getCpuName() const { return m_info.name; }
    std::uint8_t getLogicalCPUs() const { return m_info.logicalCpus; }
    std::uint8_t getPhysicalCPUs() const { return m_info.physicalCpus; }
    std::uint8_t getLogicalPerCPU() const;
    static constexpr bool isLittleEndian() { return true; }
    static constexpr bool isBigEndian() { return false; }
    bool isPentium() const; ///< can the processor be asked at all?

    /// The performance counter's steps per second. Without such a counter, the processor's clock in Hz, whole
    /// megahertz, measured for 701 ms at the highest priority.
    /// @param bindCpu  measure with the whole process on its first processor; taken back afterwards
    static std::int64_t calculateClockSpeed(bool bindCpu);

    static unsigned char
    getAPIC_bits(); ///< the number of the processor that runs this; 0 if it can not be asked

    /// Splits that number into package and place in the package.
    static void getAPIC(unsigned char &physicalId, unsigned char &logicalId);

    /// The processor time of the whole process since the last sample, taken anew when more than @p period has
    /// gone by. One caller at a time.
    /// @param period  seconds; a negative one only reads the last load
    /// @return percent of one processor, 200 for two in full use; 0 on the first call
    static float getCPULoad(float period);

    /// Reads the time stamp together with the number of the processor that it belongs to.
    static void rdtscCpuid(unsigned *apic, unsigned long long *ticks);

private:
    bool has(int bit) const { return (m_info.flags >> bit & 1) != 0; }
    void fill();
    void checkCpuSerial();
    void checkCpuName();

    static bool cpuid(std::uint32_t leaf, std::uint32_t *eax, std::uint32_t *ebx, std::uint32_t *ecx,
                      std::uint32_t *edx);
    static bool leaf1Edx(std::uint32_t bits);
    static bool leaf1Ecx(std::uint32_t bits);
    static bool checkRDTSCTechnology() { return leaf1Edx(1u << 4); }
    static bool checkCMOVTechnology() { return leaf1Edx(1u << 15); }
    static bool checkFCMOVTechnology() { return leaf1Edx(1u << 15 | 1u << 0); }
    static bool checkSSETechnology() { return leaf1Edx(1u << 25); }
    static bool checkSSE2Technology() { return leaf1Edx(1u << 26); }
    static bool check3DNowTechnology();
    static bool checkMMXTechnology() { return leaf1Edx(1u << 23); }
    static bool checkSSE3Technology() { return leaf1Ecx(1u << 0); }
    static bool checkSpeedstep() { return leaf1Ecx(1u << 7); }
    static bool checkThermalMonitor() { return leaf1Edx(1u << 29); }
    static bool checkIA64Technology() { return leaf1Edx(1u << 30); }
    static bool checkSerialCPU() { return leaf1Edx(1u << 18); }
    static bool checkFPU() { return leaf1Edx(1u << 0); }
    static bool checkACPI() { return leaf1Edx(1u << 22); }
    static bool HTSupported();
    static std::uint32_t logicalProcessorsPerPackage();
    static char const *getProcessorVendorId();
    static void getTimeStamp(long long *ticks);
    static void getTimeStamp(long long &ticks);

    sCPUInfo m_info;
};

} // namespace Qel
