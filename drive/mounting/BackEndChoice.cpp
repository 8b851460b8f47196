#include "mounting/BackEndChoice.h"

#include "mounting/DirectBackEnd.h"

namespace ferrobank::drive {

std::unique_ptr<BackEnd> chooseBackEnd(const Paths& paths, const Log&)
{
    return std::make_unique<DirectBackEnd>(paths.image, paths.drive, paths.runtime / "top-level");
}

} // namespace ferrobank::drive
