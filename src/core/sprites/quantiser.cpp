#include "quantiser.h"

#include <algorithm>
#include <functional>

struct OctreeQuantizer::Node
{
    bool isLeaf = false;
    quint32 pixelCount = 0;
    // 64-bit, so that a leaf of a very large image can't overflow.
    quint64 red = 0;
    quint64 green = 0;
    quint64 blue = 0;
    Node *nextReducible = nullptr;
    Node *children[8] = {};

    ~Node()
    {
        for (Node *child : children)
            delete child;
    }
};

OctreeQuantizer::OctreeQuantizer(int maxColors, int depth)
    : m_maxColors(std::max(maxColors, 1))
    , m_depth(std::clamp(depth, 1, 8))
{
    m_root = newNode(0);
}

OctreeQuantizer::~OctreeQuantizer()
{
    delete m_root;
}

OctreeQuantizer::Node *OctreeQuantizer::newNode(int level)
{
    auto *node = new Node;
    if (level == m_depth) {
        node->isLeaf = true;
        ++m_leafCount;
    } else {
        node->nextReducible = m_reducible[level];
        m_reducible[level] = node;
    }
    return node;
}

void OctreeQuantizer::addColor(uchar red, uchar green, uchar blue)
{
    Node *node = m_root;
    for (int level = 0; !node->isLeaf; ++level) {
        const int bit = 0x80 >> level;
        const int child = ((red & bit) ? 4 : 0) | ((green & bit) ? 2 : 0) | ((blue & bit) ? 1 : 0);
        if (!node->children[child])
            node->children[child] = newNode(level + 1);
        node = node->children[child];
    }
    ++node->pixelCount;
    node->red += red;
    node->green += green;
    node->blue += blue;
    // A fold of a node with one child changes nothing yet; the next ones do.
    while (m_leafCount > m_maxColors && reduce()) {
    }
}

void OctreeQuantizer::addImage(const QImage &image)
{
    const QImage rgb = image.format() == QImage::Format_RGB32 || image.format() == QImage::Format_ARGB32
                           ? image
                           : image.convertToFormat(QImage::Format_RGB32);
    for (int y = 0; y < rgb.height(); ++y) {
        const QRgb *line = reinterpret_cast<const QRgb *>(rgb.constScanLine(y));
        for (int x = 0; x < rgb.width(); ++x)
            addColor(uchar(qRed(line[x])), uchar(qGreen(line[x])), uchar(qBlue(line[x])));
    }
}

bool OctreeQuantizer::reduce()
{
    // The deepest level with inner nodes; the root only when nothing else is left.
    int level = m_depth - 1;
    while (level > 0 && !m_reducible[level])
        --level;
    Node *node = m_reducible[level];
    if (!node)
        return false;
    m_reducible[level] = node->nextReducible;
    int children = 0;
    for (Node *&child : node->children) {
        if (!child)
            continue;
        node->red += child->red;
        node->green += child->green;
        node->blue += child->blue;
        node->pixelCount += child->pixelCount;
        delete child;
        child = nullptr;
        ++children;
    }
    node->isLeaf = true;
    m_leafCount += 1 - children;
    return true;
}

QRGBPal OctreeQuantizer::palette() const
{
    QRGBPal colors;
    int next = 0;
    const std::function<void(const Node *)> walk = [&](const Node *node) {
        if (next >= QRGBPal::Size)
            return;
        if (node->isLeaf) {
            QRGBPalEntry &entry = colors.entries[next++];
            if (node->pixelCount > 0) {
                entry.red = uchar(std::min<quint64>(node->red / node->pixelCount, 255));
                entry.green = uchar(std::min<quint64>(node->green / node->pixelCount, 255));
                entry.blue = uchar(std::min<quint64>(node->blue / node->pixelCount, 255));
            }
            entry.alpha = 255;
            return;
        }
        for (const Node *child : node->children) {
            if (child)
                walk(child);
        }
    };
    walk(m_root);
    return colors;
}
