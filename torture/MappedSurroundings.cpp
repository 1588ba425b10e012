#include "MappedSurroundings.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <new>
#include <stdexcept>

#include "hosts/common/FileDescriptor.h"

namespace quillbay::torture {

MappedSurroundings::MappedSurroundings(const std::filesystem::path& path) {
  const host::FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  void* mapped = MAP_FAILED;
  if (::ftruncate(file.get(), sizeof(Surroundings)) == 0) {
    mapped =
        ::mmap(nullptr, sizeof(Surroundings), PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
  }
  if (mapped == MAP_FAILED) throw std::runtime_error("cannot map " + path.string());
  mapped_ = new (mapped) Surroundings;
}

MappedSurroundings::~MappedSurroundings() { ::munmap(mapped_, sizeof(Surroundings)); }

}  // namespace quillbay::torture
