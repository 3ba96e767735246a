#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QMap>
#include <QString>
#include <QVariant>

/** One configured M.U.G.E.N. installation. */
struct QMugenInfo
{
    QString name;
    /** Path of the engine's executable. */
    QString exe;
    /** Parameter template of a test run. */
    QString params;
    /** Path of an image shown beside the name; empty for the default icon. */
    QString icon;
};

/**
 * The configuration store and the list of engine installations in one
 * object.
 *
 * `config` is a flat map read straight by everyone who needs a setting:
 * `configuration->config["undo_limit"].toInt()`. Values read from a file
 * are strings and convert on use; reading a key that was never set gives an
 * invalid variant (false, 0, empty), and brings the key into being, so it
 * is saved with an empty value.
 */
class QMugenModel : public QAbstractListModel
{
    Q_OBJECT

public:
    /** Installations beyond this many are not read back by load(). */
    static constexpr int MaxInstallations = 50;

    explicit QMugenModel(QObject *parent = nullptr);
    ~QMugenModel() override;

    /** Assigns every default value, over whatever the keys hold. */
    void loadDefaults();
    /**
     * Loads the defaults, then the keys and installations of `fileName`.
     * Returns false, leaving the defaults, when the file can't be read or
     * isn't a configuration. Installations already in the list stay.
     */
    bool load(const QString &fileName);
    /**
     * Writes every key, installations renumbered from 0, to `fileName`.
     * The write is atomic: a failure leaves the earlier file as it was.
     */
    bool save(const QString &fileName);

    /** Writes the configuration to a ".ksc3" file: the same form as config.xml. */
    bool exportConfiguration(const QString &fileName) { return save(fileName); }
    /** Replaces the installations and the settings by those of a ".ksc3" file. */
    bool importConfiguration(const QString &fileName);

    /** Appends an installation. */
    void add(const QString &name, const QString &exe, const QString &params, const QString &icon);
    /** Replaces the installation at `row`. */
    void setInstallation(int row, const QMugenInfo &info);
    void remove(int row);
    /** Moves the installation at `from` to the place `to`. */
    void move(int from, int to);
    /** Removes every installation. */
    void clear();

    int count() const { return int(mugens.size()); }
    const QMugenInfo &installation(int row) const { return *mugens.at(row); }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    /** Display: the name. Decoration: the installation's icon, or the default one. */
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    /** The installations, in list order. Owned. */
    QList<QMugenInfo *> mugens;
    /** Key to value. */
    QMap<QString, QVariant> config;
};

/** The process-wide configuration, created at start and deleted at the end. */
extern QMugenModel *configuration;
