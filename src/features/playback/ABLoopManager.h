#pragma once

#include <optional>
#include <QObject>
#include <QtQml/qqmlregistration.h>
#include <QVariant>

/// The two points of an A-B loop. The engine sets them and keeps B after A; whenever playback
/// reaches or passes B it jumps back to A. GUI thread only.
class ABLoopManager : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The engine owns the loop points")
    /// Seconds, or undefined when unset.
    Q_PROPERTY(QVariant pointA READ pointAVariant NOTIFY pointAChanged)
    Q_PROPERTY(QVariant pointB READ pointBVariant NOTIFY pointBChanged)

public:
    using QObject::QObject;

    std::optional<double> pointA() const { return m_pointA; }
    std::optional<double> pointB() const { return m_pointB; }
    void setPointA(std::optional<double> seconds);
    void setPointB(std::optional<double> seconds);
    QVariant pointAVariant() const { return m_pointA ? QVariant(*m_pointA) : QVariant(); }
    QVariant pointBVariant() const { return m_pointB ? QVariant(*m_pointB) : QVariant(); }

    /// Where to jump back to at this position: A once B has been reached, otherwise nothing.
    std::optional<double> shouldLoop(double currentTime) const;
    void clearLoop();

    /// Sets A at `seconds`, dropping a B that is not after it.
    void markA(double seconds);
    /// Sets B at `seconds` only after A (a B at or before A is refused); whether a loop is set
    /// afterwards.
    bool markB(double seconds);

Q_SIGNALS:
    void pointAChanged();
    void pointBChanged();

private:
    std::optional<double> m_pointA;
    std::optional<double> m_pointB;
};
