#include <pavo/IProfileKey.h>

namespace pavo {

IProfileKey::IProfileKey() = default;
IProfileKey::IProfileKey(const IProfileKey&) = default;
IProfileKey& IProfileKey::operator=(const IProfileKey&) = default;
IProfileKey::~IProfileKey() = default;

}  // namespace pavo
