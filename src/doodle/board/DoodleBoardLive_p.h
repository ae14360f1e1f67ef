#pragma once

// Gestures under way, as they travel: what this board reports of its own
// while the finger moves, and the previews and laser tracks of the others'.
// Nothing here is cached, stamped, part of a state or of any picture. Not
// installed.
#include <doodle/model/DoodleAction.h>

#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QPointF>
#include <QString>
#include <QTimer>

// Another participant's stroke or shape, as its progress reports have it.
struct DoodleRemotePreview
{
    quint64 gesture = 0;
    DoodleAction action; // drawn as the committed one will be
    qint64 heard = 0;    // live clock, ms
};

// A laser's track: its points with the time each was heard, newest last.
struct DoodleLaserTrack
{
    struct Sample
    {
        QPointF point; // normalised
        qint64 heard = 0;
        bool joined = false; // to the sample before it
    };
    quint64 gesture = 0;
    qint64 next = 0; // the index the drawer gives the next point
    QList<Sample> samples;
};

struct DoodleLive
{
    bool sends = true;
    bool shows = true;
    // This board's gesture under way.
    quint64 gesture = 0;
    qint64 kind = 0;          // what its reports carry; 0: none are sent
    qsizetype sentPoints = 0; // of the stroke or the laser track
    bool announced = false;   // a report went out, so an abandon is told
    bool changed = false;     // since the last report
    qint64 lastSent = 0;
    QList<QPointF> laserPending; // track points not yet reported
    // The others'.
    QHash<QString, DoodleRemotePreview> previews;
    QHash<QString, quint64> finished; // the last gesture of each sender that ended
    QHash<QString, DoodleLaserTrack> tracks;
    QElapsedTimer clock;
    QTimer flush; // sends a change the interval held back
    QTimer tick;  // fades laser tracks and drops previews gone silent
};

// The board's layers above the cache: previews (0), the text entry (1), a
// stroke's tail (2) are this board's own; the others' previews and the laser
// tracks lie above them. Saved pictures leave those two out.
constexpr quint64 kDoodleRemoteLayer = 3;
constexpr quint64 kDoodleLaserLayer = 4;
constexpr quint64 kDoodleLayerCount = 5;
