#include "Ferrobank/CLI/CLI.h"

namespace ferrobank {

CLI::Failure::Failure(const QString& message) : std::runtime_error(message.toStdString()), _message(message)
{}

} // namespace ferrobank
