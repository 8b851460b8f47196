#pragma once

#include "Ferrobank/Views/MainWindow.h"

#include <QtCore/QLibrary>
#include <QtCore/QString>

#include <memory>
#include <thread>

namespace ferrobank {

/// The library with everything drawn, loaded from beside the executable when the first window is made. Main
/// thread. Never unloaded, because the toolkit keeps pointers into a library that has registered types.
class WindowLibrary {
public:
    WindowLibrary();

    /// Calls the entry point of that name, which makes a thing of that type. Null when the library cannot be
    /// loaded or lacks the entry point; errorText() then says why.
    template <typename Thing>
    [[nodiscard]] std::unique_ptr<Thing> make(const char* entryPoint, const WindowCollaborators& with)
    {
        using Maker = Thing* (*)(const WindowCollaborators&);
        const auto maker = reinterpret_cast<Maker>(resolve(entryPoint));
        return std::unique_ptr<Thing>(maker == nullptr ? nullptr : maker(with));
    }

    [[nodiscard]] QString errorText() const { return _library.errorString(); }

private:
    [[nodiscard]] QFunctionPointer resolve(const char* entryPoint);

    QLibrary _library;
    std::jthread _fonts; ///< reads them into the toolkit's cache
};

} // namespace ferrobank
