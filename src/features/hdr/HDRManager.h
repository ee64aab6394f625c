#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

/// Whether the current video is high-dynamic-range, from libmpv's colour parameters.
/// Tone mapping itself is left to libmpv; this is an observable record for the views.
/// GUI thread only.
class HDRManager : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the playback engine")
    Q_PROPERTY(bool isHDRContent READ isHDRContent NOTIFY isHDRContentChanged)
    Q_PROPERTY(QString transferFunction READ transferFunction NOTIFY transferFunctionChanged)
    Q_PROPERTY(QString primaries READ primaries NOTIFY primariesChanged)
    Q_PROPERTY(double maxEDR READ maxEDR NOTIFY maxEDRChanged)

public:
    using QObject::QObject;

    bool isHDRContent() const { return m_isHDRContent; }
    QString transferFunction() const { return m_transferFunction; }
    QString primaries() const { return m_primaries; }
    /// Linux offers no query for a display's extended range headroom, so this stays 1.0.
    double maxEDR() const { return m_maxEDR; }

    /// Takes libmpv's name of the video's transfer function; a null text means libmpv does
    /// not know the video's parameters yet.
    void updateTransferFunction(const QString& name);
    /// The same for the colour primaries.
    void updatePrimaries(const QString& name);
    void reset();

Q_SIGNALS:
    void isHDRContentChanged();
    void transferFunctionChanged();
    void primariesChanged();
    void maxEDRChanged();

private:
    void setIsHDRContent(bool value);
    void setTransferFunction(const QString& value);
    void setPrimaries(const QString& value);
    void setMaxEDR(double value);

    bool m_isHDRContent = false;
    QString m_transferFunction = QStringLiteral("bt.1886");
    QString m_primaries = QStringLiteral("bt.709");
    double m_maxEDR = 1.0;
};
