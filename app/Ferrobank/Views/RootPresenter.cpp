#include "Ferrobank/Views/RootPresenter.h"

#include "Ferrobank/Model/AppModel.h"

namespace ferrobank {

namespace {

constexpr int kDashboardWidth = 620;
constexpr int kPageWidth = 520;

} // namespace

RootPresenter::RootPresenter(const WindowCollaborators& with)
    : _model(with.model), _dashboard(with), _onboarding(with), _checks(with), _uninstall(with)
{
    connect(&_model, &AppModel::screenChanged, this, &RootPresenter::screenChanged);
}

Screen::Kind RootPresenter::screen() const
{
    return _model.screen().kind();
}

Screen::Step RootPresenter::step() const
{
    return _model.screen().step();
}

int RootPresenter::contentWidth() const
{
    return screen() == Screen::Dashboard ? kDashboardWidth : kPageWidth;
}

} // namespace ferrobank
