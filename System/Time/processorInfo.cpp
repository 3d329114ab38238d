#include "System/Time/processorInfo.h"

#include "Support/OS/clock.h"
#include "Support/OS/process.h"
#include "Support/OS/processor.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace Qel {

template class tSingleton<ProcessorInfo>;

namespace {

constexpr std::uint32_t extendedLeaves = 0x80000000;
constexpr int rdtscTries = 1000; // a machine whose numbers never agree must not hang the caller

constexpr std::uint32_t family = 0xF00;
constexpr std::uint32_t extendedFamily = 0xF00000;
constexpr std::uint32_t hyperThreading = 1u << 28;

constexpr std::uint32_t word(char const (&text)[5])
{
    std::uint32_t value = 0;
    for (int index = 3; index >= 0; --index) {
        value = value << 8 | static_cast<unsigned char>(text[index]);
    }
    return value;
}

} // namespace

ProcessorInfo::ProcessorInfo()
{
    fill();
}

void ProcessorInfo::init(bool force)
{
    if (m_info.size == 0 || force) {
        fill();
    }
}

void ProcessorInfo::fill()
{
    m_info = sCPUInfo();
    m_info.size = sizeof m_info;
    m_info.cycles = calculateClockSpeed(true);

    // A count of 0 would have to divide the processors.
    std::uint32_t const perPackage = std::max(logicalProcessorsPerPackage(), 1u);
    std::uint32_t const system = std::max(os::processor().systemCount(), 1u);
    std::uint32_t const packages = perPackage <= system ? system / perPackage : system;
    m_info.physicalCpus = static_cast<std::uint8_t>(std::min(packages, 255u));
    m_info.logicalCpus = static_cast<std::uint8_t>(perPackage * m_info.physicalCpus);

    using Check = bool (*)();
    static constexpr Check checks[] = {
        checkRDTSCTechnology,
        checkCMOVTechnology,
        checkFCMOVTechnology,
        checkSSETechnology,
        checkSSE2Technology,
        check3DNowTechnology,
        checkMMXTechnology,
        HTSupported,
        checkSSE3Technology,
        checkSpeedstep,
        checkThermalMonitor,
        checkIA64Technology,
        checkSerialCPU,
        checkFPU,
        checkACPI,
    };
    for (std::size_t bit = 0; bit < std::size(checks); ++bit) {
        m_info.flags |= checks[bit]() ? 1u << bit : 0;
    }

    checkCpuSerial();
    checkCpuName();
    std::strncpy(m_info.vendor, getProcessorVendorId(), sizeof m_info.vendor - 1);
}

std::uint8_t ProcessorInfo::getLogicalPerCPU() const
{
    return static_cast<std::uint8_t>(m_info.logicalCpus / std::max<std::uint8_t>(m_info.physicalCpus, 1));
}

bool ProcessorInfo::isPentium() const
{
    return os::processor().canIdentify();
}

bool ProcessorInfo::cpuid(std::uint32_t leaf, std::uint32_t *eax, std::uint32_t *ebx, std::uint32_t *ecx,
                          std::uint32_t *edx)
{
    if (leaf > extendedLeaves) {
        os::CpuidAnswer highest;
        if (!os::processor().cpuid(extendedLeaves, highest) || leaf > highest.eax) {
            return false;
        }
    }
    os::CpuidAnswer answer;
    bool const ran = os::processor().cpuid(leaf, answer);
    *eax = answer.eax;
    *ebx = answer.ebx;
    *ecx = answer.ecx;
    *edx = answer.edx;
    return ran;
}

bool ProcessorInfo::leaf1Edx(std::uint32_t bits)
{
    std::uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
    return cpuid(1, &eax, &ebx, &ecx, &edx) && (edx & bits) == bits;
}

bool ProcessorInfo::leaf1Ecx(std::uint32_t bits)
{
    std::uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
    return cpuid(1, &eax, &ebx, &ecx, &edx) && (ecx & bits) == bits;
}

bool ProcessorInfo::check3DNowTechnology()
{
    std::uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
    return cpuid(extendedLeaves, &eax, &ebx, &ecx, &edx) && eax >= extendedLeaves + 1 &&
           cpuid(extendedLeaves + 1, &eax, &ebx, &ecx, &edx) && (edx & 1u << 31) != 0;
}

bool ProcessorInfo::HTSupported()
{
    std::uint32_t signature = 0, ebx = 0, ecx = 0, edx = 0, unused = 0, features = 0;
    if (!cpuid(0, &unused, &ebx, &ecx, &edx)) {
        return false;
    }
    std::uint32_t ebx1 = 0, ecx1 = 0;
    if (!cpuid(1, &signature, &ebx1, &ecx1, &features)) {
        return false;
    }
    if ((signature & family) != family && (signature & extendedFamily) == 0) {
        return false;
    }
    if (ebx != word("Genu") || edx != word("ineI") || ecx != word("ntel")) {
        return false;
    }
    return (features & hyperThreading) != 0;
}

std::uint32_t ProcessorInfo::logicalProcessorsPerPackage()
{
    std::uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
    return HTSupported() && cpuid(1, &eax, &ebx, &ecx, &edx) ? ebx >> 16 & 0xFF : 1;
}

char const *ProcessorInfo::getProcessorVendorId()
{
    static char vendor[16];
    std::uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (!cpuid(0, &eax, &ebx, &ecx, &edx)) {
        return "Generic_x86";
    }
    std::memcpy(vendor, &ebx, 4);
    std::memcpy(vendor + 4, &edx, 4);
    std::memcpy(vendor + 8, &ecx, 4);
    return vendor;
}

void ProcessorInfo::checkCpuSerial()
{
    std::uint32_t eax = 0;
    std::uint32_t serial[3] = {};
    if (!hasCpuSerial() || !cpuid(3, &eax, &serial[0], &serial[1], &serial[2])) {
        return;
    }
    char *out = m_info.serial;
    for (std::uint32_t const part : serial) {
        int const wrote =
            std::snprintf(out, sizeof m_info.serial - static_cast<std::size_t>(out - m_info.serial),
                          "%s%.4x-%.4x", out == m_info.serial ? "" : "-", part >> 16, part & 0xFFFF);
        out += wrote;
    }
}

void ProcessorInfo::checkCpuName()
{
    std::uint32_t text[12] = {};
    for (std::uint32_t part = 0; part < 3; ++part) {
        std::uint32_t *const four = text + part * 4;
        if (!cpuid(extendedLeaves + 2 + part, four, four + 1, four + 2, four + 3)) {
            return;
        }
    }
    std::memcpy(m_info.name, text, sizeof text);
    // As text: what stands behind a zero is no part of the name.
    std::size_t const length = std::strlen(m_info.name);
    std::memset(m_info.name + length, 0, sizeof m_info.name - length);
}

unsigned char ProcessorInfo::getAPIC_bits()
{
    std::uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
    return cpuid(1, &eax, &ebx, &ecx, &edx) ? static_cast<unsigned char>(ebx >> 24) : 0;
}

void ProcessorInfo::getAPIC(unsigned char &physicalId, unsigned char &logicalId)
{
    std::uint32_t mask = 0xFF;
    std::uint32_t shift = 0;
    std::uint32_t const perPackage = logicalProcessorsPerPackage(); // at most 255
    for (std::uint32_t count = 1; count < perPackage; count *= 2) {
        mask <<= 1;
        ++shift;
    }
    std::uint32_t const apic = getAPIC_bits();
    logicalId = static_cast<unsigned char>(apic & ~mask);
    physicalId = static_cast<unsigned char>(apic >> shift);
}

void ProcessorInfo::getTimeStamp(long long *ticks)
{
    // The first instruction waits for all those before it.
    os::CpuidAnswer unused;
    os::processor().cpuid(0, unused);
    getTimeStamp(*ticks);
}

void ProcessorInfo::getTimeStamp(long long &ticks)
{
    ticks = static_cast<long long>(os::processor().timeStamp());
}

void ProcessorInfo::rdtscCpuid(unsigned *apic, unsigned long long *ticks)
{
    for (int tries = 0; tries < rdtscTries; ++tries) {
        *apic = getAPIC_bits();
        *ticks = os::processor().timeStamp();
        if (getAPIC_bits() == *apic) {
            return;
        }
    }
}

} // namespace Qel
