#include "Ferrobank/Views/UninstallPresenter.h"

#include "Ferrobank/Async/Spawn.h"
#include "Ferrobank/Model/AppModel.h"
#include "Platform/Workspace.h"

#include <QtCore/QDir>
#include <QtCore/QPointer>

#include <optional>

namespace ferrobank {

using namespace Qt::StringLiterals;

UninstallPresenter::UninstallPresenter(const WindowCollaborators& with)
    : _with(with), _folder(copyInside(with.home))
{
    connect(&_with.model, &AppModel::uninstallStateChanged, this, &UninstallPresenter::stateChanged);
}

QString UninstallPresenter::copyInside(const QString& folder)
{
    return QDir(folder).filePath(u"Ferrobank Files"_s);
}

UninstallPresenter::Face UninstallPresenter::face() const
{
    using Kind = AppModel::UninstallState::Kind;
    switch (_with.model.uninstallState().kind) {
    case Kind::Idle:
    case Kind::Failed:
        return Form;
    case Kind::Running:
        return Progress;
    case Kind::Done:
        return End;
    }
    return Form;
}

QString UninstallPresenter::failure() const
{
    const auto& state = _with.model.uninstallState();
    return state.kind == AppModel::UninstallState::Kind::Failed ? state.text : QString();
}

QString UninstallPresenter::outcome() const
{
    const auto& state = _with.model.uninstallState();
    return state.kind == AppModel::UninstallState::Kind::Done ? state.text : QString();
}

void UninstallPresenter::setCopiesFiles(bool value)
{
    if (_copiesFiles != value) {
        _copiesFiles = value;
        Q_EMIT answersChanged();
    }
}

void UninstallPresenter::setDeletesData(bool value)
{
    if (_deletesData != value) {
        _deletesData = value;
        Q_EMIT answersChanged();
    }
}

QString UninstallPresenter::consequence() const
{
    if (!_deletesData) {
        return tr("The data stays, so reinstalling brings your drive back.");
    }
    return _copiesFiles ? tr("Your files will be in the folder above.")
                        : tr("Your files on Ferrobank will be gone.");
}

QString UninstallPresenter::progress() const
{
    return _copiesFiles ? tr("Copying your files, then detaching the drive.") : tr("Detaching the drive.");
}

void UninstallPresenter::appeared()
{
    _copiesFiles = true;
    _folder = copyInside(_with.home);
    _deletesData = false;
    Q_EMIT answersChanged();
}

void UninstallPresenter::chooseFolder()
{
    _with.host.chooseFolder([self = QPointer(this)](const QString& chosen) {
        if (self && !chosen.isEmpty()) {
            self->_folder = copyInside(chosen);
            Q_EMIT self->answersChanged();
        }
    });
}

void UninstallPresenter::uninstall()
{
    const auto exportTo = _copiesFiles ? std::optional(_folder) : std::nullopt;
    spawn(&_with.model, _with.model.uninstall(exportTo, _deletesData));
}

void UninstallPresenter::openCopiedFiles()
{
    _with.workspace.openPath(_folder);
}

void UninstallPresenter::moveToTrash()
{
    _with.host.trashAndQuit();
}

void UninstallPresenter::quit()
{
    _with.host.quit();
}

} // namespace ferrobank
