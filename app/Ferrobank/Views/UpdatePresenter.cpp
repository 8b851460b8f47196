#include "Ferrobank/Views/UpdatePresenter.h"

#include <QtCore/QCoreApplication>

#include <ranges>
#include <utility>

namespace ferrobank {

UpdatePresenter::UpdatePresenter(UpdatePrompt prompt, Diagnostics& diagnostics)
    : _prompt(std::move(prompt)), _diagnostics(diagnostics)
{}

void UpdatePresenter::setPrompt(const UpdatePrompt& prompt)
{
    const bool hasOtherButtons = prompt.buttons != _prompt.buttons;
    _prompt = prompt;
    Q_EMIT changed();
    // Told apart, so that a button keeps the focus while the progress moves.
    if (hasOtherButtons) {
        Q_EMIT buttonsChanged();
    }
}

QStringList UpdatePresenter::buttons() const
{
    QStringList titles;
    for (const UpdateButton& button : _prompt.buttons | std::views::reverse) {
        titles.append(button.text);
    }
    return titles;
}

QString UpdatePresenter::about()
{
    return tr("Ferrobank %1").arg(QCoreApplication::applicationVersion());
}

void UpdatePresenter::press(int button)
{
    const qsizetype index = _prompt.buttons.size() - 1 - button;
    if (index >= 0 && index < _prompt.buttons.size()) {
        Q_EMIT pressed(_prompt.buttons.at(index).action);
    }
}

void UpdatePresenter::setAutomatic(bool automatic)
{
    if (automatic == _prompt.automatic) {
        return;
    }
    _prompt.automatic = automatic;
    Q_EMIT changed();
    Q_EMIT automaticChosen(automatic);
}

} // namespace ferrobank
