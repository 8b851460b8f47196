#pragma once

#include "Ferrobank/Views/MainWindow.h"

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtQml/qqmlregistration.h>

namespace ferrobank {

/// The uninstall screen: its form, and which of its three faces shows. Main thread; lives as long as the
/// window. The answers are those of one visit: appeared() brings back the safe ones.
class UninstallPresenter : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window")

    Q_PROPERTY(Face face READ face NOTIFY stateChanged)
    Q_PROPERTY(QString failure READ failure NOTIFY stateChanged)
    Q_PROPERTY(QString outcome READ outcome NOTIFY stateChanged)

    Q_PROPERTY(bool copiesFiles READ copiesFiles WRITE setCopiesFiles NOTIFY answersChanged)
    Q_PROPERTY(QString folder READ folder NOTIFY answersChanged)
    Q_PROPERTY(bool deletesData READ deletesData WRITE setDeletesData NOTIFY answersChanged)
    Q_PROPERTY(bool losesFiles READ losesFiles NOTIFY answersChanged)
    Q_PROPERTY(QString consequence READ consequence NOTIFY answersChanged)
    Q_PROPERTY(QString progress READ progress NOTIFY answersChanged)

public:
    enum Face { Form, Progress, End };
    Q_ENUM(Face)

    explicit UninstallPresenter(const WindowCollaborators& with);

    [[nodiscard]] Face face() const;

    /// Why the last try failed; empty otherwise.
    [[nodiscard]] QString failure() const;

    /// What became of files and data; only on the end face.
    [[nodiscard]] QString outcome() const;

    [[nodiscard]] bool copiesFiles() const { return _copiesFiles; }

    void setCopiesFiles(bool value);

    /// Destination of the copy; kept while no copy is wanted.
    [[nodiscard]] QString folder() const { return _folder; }

    [[nodiscard]] bool deletesData() const { return _deletesData; }

    void setDeletesData(bool value);

    /// The answers together would leave nothing of the user's files.
    [[nodiscard]] bool losesFiles() const { return _deletesData && !_copiesFiles; }

    [[nodiscard]] QString consequence() const;
    [[nodiscard]] QString progress() const;

    Q_INVOKABLE void appeared();
    Q_INVOKABLE void chooseFolder();
    Q_INVOKABLE void uninstall();
    Q_INVOKABLE void openCopiedFiles();
    Q_INVOKABLE void moveToTrash();
    Q_INVOKABLE void quit();

Q_SIGNALS:
    void stateChanged();
    void answersChanged();

private:
    [[nodiscard]] static QString copyInside(const QString& folder);

    WindowCollaborators _with;
    bool _copiesFiles = true;
    QString _folder;
    bool _deletesData = false;
};

} // namespace ferrobank
