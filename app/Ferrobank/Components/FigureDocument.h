#pragma once

#include <QtCore/QObject>
#include <QtGui/QFont>
#include <QtQml/qqmlregistration.h>
#include <QtQuick/QQuickTextDocument>

namespace ferrobank {

/// Gives every digit of a text the width of the widest, so that a figure that counts does not make its
/// neighbours dance. Many faces have digits of one width, which are left alone; the others have them only as
/// an option that the toolkit cannot ask for. Main thread; belongs to the text item whose document it is.
class FigureDocument : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickTextDocument* document READ document WRITE setDocument NOTIFY documentChanged)
    Q_PROPERTY(QFont font READ font WRITE setFont NOTIFY fontChanged)

public:
    using QObject::QObject;

    [[nodiscard]] QQuickTextDocument* document() const { return _document; }

    void setDocument(QQuickTextDocument* document);

    [[nodiscard]] QFont font() const { return _font; }

    /// The font in which the document is set.
    void setFont(const QFont& font);

    /// How wide the text is on one line with such digits, in device-independent pixels.
    [[nodiscard]] static qreal width(const QString& text, const QFont& font);

Q_SIGNALS:
    void documentChanged();
    void fontChanged();

private:
    void space();

    QQuickTextDocument* _document = nullptr;
    QFont _font;
    bool _spacing = false;
};

} // namespace ferrobank
