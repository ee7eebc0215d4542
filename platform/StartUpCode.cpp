#include "platform/StartUpCode.h"

#include <cstddef>
#include <cstdint>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

namespace vantro {

namespace {

// The loader has written into the code itself.
bool IsCodeChanged(const dl_phdr_info& object, const ElfW(Phdr) & dynamic)
{
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the loader tells addresses as numbers
    for (const auto* entry = reinterpret_cast<const ElfW(Dyn)*>(object.dlpi_addr + dynamic.p_vaddr);
         entry->d_tag != DT_NULL; ++entry) {
        if (entry->d_tag == DT_TEXTREL || (entry->d_tag == DT_FLAGS && (entry->d_un.d_val & DF_TEXTREL) != 0))
            return true;
    }
    return false;
}

int ForgetCodeOf(dl_phdr_info* object, std::size_t /*size*/, void* /*unused*/)
{
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        const ElfW(Phdr)& part = object->dlpi_phdr[i];
        if (part.p_type == PT_DYNAMIC && IsCodeChanged(*object, part))
            return 0;
    }
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        const ElfW(Phdr)& part = object->dlpi_phdr[i];
        if (part.p_type != PT_LOAD || (part.p_flags & PF_W) != 0)
            continue;
        const std::uintptr_t begin = (object->dlpi_addr + part.p_vaddr + page - 1) / page * page;
        const std::uintptr_t end = (object->dlpi_addr + part.p_vaddr + part.p_filesz) / page * page;
        if (end > begin)
            // NOLINTNEXTLINE(performance-no-int-to-ptr): as above
            madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
    }
    return 0;
}

} // namespace

void ForgetStartUpCode()
{
    dl_iterate_phdr(ForgetCodeOf, nullptr);
}

} // namespace vantro
