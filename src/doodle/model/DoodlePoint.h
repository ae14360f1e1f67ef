#pragma once

#include <doodle/DoodleExport.h>

#include <QList>
#include <QString>
#include <QStringList>

#include <initializer_list>
#include <iterator>
#include <limits>

// One point of a stroke as it travels: the time interval ("%d"), x and y
// ("%f"), as strings. A point in exactly that form is held as three integers
// (x and y in millionths) and its strings are written again when asked for;
// a point in any other form (a sender that writes "0.5", "1e-3", extra
// members, or a value beyond the range) keeps the strings it came with.
class DOODLE_EXPORT DoodlePoint
{
public:
    DoodlePoint() = default;
    // Implicit, so that a point can be given as its strings.
    DoodlePoint(const QStringList &strings);
    // The point that formatting the three values gives.
    DoodlePoint(qint32 timeInterval, float x, float y);

    qsizetype size() const;
    QString at(qsizetype index) const;
    QStringList toStringList() const;
    // The position as readers take it: the second and third strings parsed as
    // QString::toFloat parses them (0 when missing or unreadable).
    float x() const;
    float y() const;

    friend bool operator==(const DoodlePoint &a, const DoodlePoint &b)
    {
        return a.m_interval == b.m_interval && a.m_x == b.m_x && a.m_y == b.m_y &&
               a.m_strings == b.m_strings;
    }
    friend bool operator!=(const DoodlePoint &a, const DoodlePoint &b) { return !(a == b); }

private:
    friend class DoodlePointList;
    // m_x holds this instead of millionths when the point keeps its strings.
    static constexpr qint32 kKeptStrings = std::numeric_limits<qint32>::min();

    bool isCompact() const { return m_x != kKeptStrings; }

    qint32 m_interval = 0;
    qint32 m_x = kKeptStrings;
    qint32 m_y = 0;
    QStringList m_strings;
};

// The point list of a stroke: 12 bytes per point in the "%d"/"%f" form, and
// the original strings, in a side list, for points in any other form.
class DOODLE_EXPORT DoodlePointList
{
public:
    class const_iterator
    {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = DoodlePoint;
        using difference_type = qsizetype;
        using pointer = void;
        using reference = DoodlePoint;

        const_iterator(const DoodlePointList *list, qsizetype index) : m_list(list), m_index(index)
        {}
        DoodlePoint operator*() const { return m_list->at(m_index); }
        const_iterator &operator++()
        {
            ++m_index;
            return *this;
        }
        bool operator==(const const_iterator &other) const { return m_index == other.m_index; }
        bool operator!=(const const_iterator &other) const { return m_index != other.m_index; }

    private:
        const DoodlePointList *m_list;
        qsizetype m_index;
    };

    DoodlePointList() = default;
    DoodlePointList(std::initializer_list<DoodlePoint> points);

    qsizetype size() const { return m_points.size(); }
    bool isEmpty() const { return m_points.isEmpty(); }
    DoodlePoint at(qsizetype index) const;
    const_iterator begin() const { return const_iterator(this, 0); }
    const_iterator end() const { return const_iterator(this, size()); }

    void append(const DoodlePoint &point);
    void reserve(qsizetype size) { m_points.reserve(size); }
    void clear();

private:
    // A point in the "%d"/"%f" form; x == kKeptStrings marks a point whose
    // strings are m_keptStrings[interval].
    struct Packed
    {
        qint32 interval;
        qint32 x;
        qint32 y;
    };

    QList<Packed> m_points;
    QList<QStringList> m_keptStrings;
};

// Lists are equal when their points have the same strings.
DOODLE_EXPORT bool operator==(const DoodlePointList &a, const DoodlePointList &b);
inline bool operator!=(const DoodlePointList &a, const DoodlePointList &b)
{
    return !(a == b);
}
