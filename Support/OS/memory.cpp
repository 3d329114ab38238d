#include "Support/OS/memory.h"

#include <sys/uio.h>
#include <unistd.h>

namespace os {

bool readMemory(void const *address, void *out, std::size_t size)
{
    iovec const to{out, size};
    iovec const from{const_cast<void *>(address), size};
    return process_vm_readv(getpid(), &to, 1, &from, 1, 0) == static_cast<ssize_t>(size);
}

} // namespace os
