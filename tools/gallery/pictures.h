#ifndef GALLERY_PICTURES_H
#define GALLERY_PICTURES_H

#include "rvrender.h"

#include <QtCore/QStringList>
#include <QtCore/QVector>
#include <QtGui/QImage>

#include <functional>

namespace gallery {

//! What one picture drew: layers for rvRender, or a finished image (noise).
struct Drawing
{
    QVector<rvRender::Layer> layers;
    QImage image;
    QStringList notes; //!< shown under the picture in the index
};

struct Picture
{
    QString section; //!< heading of the group in the index
    QString name;    //!< file name without ".png"
    QString title;   //!< the call that made it
    QString caption; //!< the operands and what to look for
    std::function<Drawing()> draw;
};

//! Every picture of the gallery, in index order.
QVector<Picture> pictures();

} // namespace gallery

#endif // GALLERY_PICTURES_H
