#include "path/kocurve.h"

#include "path/koneighbour_p.h"
#include "path/kopath.h"
#include "path/kosegment.h"

#include <QtCore/QtNumeric>

// The model side of koCurve: construction, links and text form. The geometry
// on curve values lives with the curve subsystem.

koCurve::koCurve(koPath *path, koSegment *segment1, koSegment *segment2)
    : m_path(path), m_segment1(segment1), m_segment2(segment2)
{
    if (m_segment1)
        m_segment1->addRef();
    if (m_segment2)
        m_segment2->addRef();
}

koCurve::koCurve(const QVector<double> &values, koPath *path) : m_path(path)
{
    // A short vector gives NaN coordinates rather than reading past its end.
    auto at = [&values](int i) { return i < values.size() ? values.at(i) : qQNaN(); };
    const koPoint p1(at(0), at(1));
    const koPoint p2(at(6), at(7));
    m_segment1 = new koSegment(p1, koPoint(), koPoint(at(2) - p1.x, at(3) - p1.y));
    m_segment2 = new koSegment(p2, koPoint(at(4) - p2.x, at(5) - p2.y), koPoint());
    m_segment1->addRef();
    m_segment2->addRef();
}

koCurve::~koCurve()
{
    koSegment *s1 = m_segment1;
    koSegment *s2 = m_segment2;
    m_segment1 = m_segment2 = nullptr;
    m_path = nullptr;
    if (s1)
        s1->release();
    if (s2)
        s2->release();
}

void koCurve::release()
{
    if (refCount > 1) {
        --refCount;
        return;
    }
    refCount = -2;
    delete this;
}

koCurve *koCurve::clone() const
{
    return new koCurve(m_path, m_segment1, m_segment2);
}

koPoint koCurve::getPoint1() const
{
    return m_segment1 ? m_segment1->point : koPoint(qQNaN(), qQNaN());
}

koPoint koCurve::getPoint2() const
{
    return m_segment2 ? m_segment2->point : koPoint(qQNaN(), qQNaN());
}

int koCurve::index() const
{
    return m_segment1 ? m_segment1->index : -1;
}

bool koCurve::isFirst() const
{
    return m_path && m_segment1 && m_segment1->index == 0;
}

bool koCurve::isLast() const
{
    return m_path && m_segment1 && m_segment1->index == int(m_path->_countCurves()) - 1;
}

koCurve *koCurve::getNext() const
{
    return m_path ? koCyclicNeighbour(m_path->getCurves(), index(), 1, m_path->closed) : nullptr;
}

koCurve *koCurve::getPrevious() const
{
    return m_path ? koCyclicNeighbour(m_path->getCurves(), index(), -1, m_path->closed) : nullptr;
}

void koCurve::clearHandles()
{
    if (m_segment1)
        m_segment1->setHandleOut(koPoint());
    if (m_segment2)
        m_segment2->setHandleIn(koPoint());
}

bool koCurve::remove()
{
    if (!m_path || !m_segment1 || !m_segment2)
        return false;
    // Removing segment2 may release this curve (and segment2) for good, so
    // everything needed afterwards is held here.
    koSegment *s1 = m_segment1;
    koSegment *s2 = m_segment2;
    s1->addRef();
    const koPoint savedOut = s1->handleOut;
    s1->setHandleOut(s2->handleOut);
    const bool removed = s2->remove();
    if (!removed)
        s1->setHandleOut(savedOut);
    s1->release();
    return removed;
}

QString koCurve::toString() const
{
    QString text = QStringLiteral("point1: ") + getPoint1().toString();
    if (m_segment1 && !m_segment1->handleOut.isZero())
        text += QStringLiteral(" handle1: ") + m_segment1->handleOut.toString();
    if (m_segment2 && !m_segment2->handleIn.isZero())
        text += QStringLiteral(" handle2: ") + m_segment2->handleIn.toString();
    text += QStringLiteral(" point2: ") + getPoint2().toString();
    return text;
}

void koCurve::_changed()
{
    length = 0;
    bounds = koRect();
}
