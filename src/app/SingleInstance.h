#pragma once

#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

/// One player per session: the first launch owns "org.velmar.VelmarPlayer" on the session bus;
/// a later launch hands its files to that one and exits. Without a session bus every launch
/// runs on its own. GUI thread only.
class SingleInstance : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.velmar.VelmarPlayer")

public:
    static inline const QString serviceName = QStringLiteral("org.velmar.VelmarPlayer");
    static inline const QString objectPath = QStringLiteral("/org/velmar/VelmarPlayer");

    explicit SingleInstance(QObject* parent = nullptr);
    ~SingleInstance() override;

    /// Takes the name; false when another player holds it (or there is no bus to ask).
    bool claim();
    /// Sends the files (possibly none) to the player holding the name; false if none answers.
    static bool forward(const QList<QUrl>& urls);

public Q_SLOTS:
    /// Called over the bus by a later launch: URLs as strings; an empty list just raises.
    Q_SCRIPTABLE void Open(const QStringList& uris);

Q_SIGNALS:
    void openRequested(const QList<QUrl>& urls);

private:
    bool m_claimed = false;
};
