#pragma once

#include "qrgbpal.h"

#include <QImage>

/**
 * The octree colour quantiser: the colours of true colour pixels reduced to
 * at most `maxColors`, for every place where an image must become indexed.
 *
 * Each pixel walks down the tree by one bit of red, green and blue per
 * level, from the top bit; `depth` levels (3 or 8 in use; 1 to 8 taken)
 * end in leaves that sum the colours reaching them. Whenever there are more
 * leaves than `maxColors`, the newest node of the deepest level that has
 * inner nodes folds its children into itself. The result is deterministic
 * for a given order of pixels.
 */
class OctreeQuantizer
{
public:
    OctreeQuantizer(int maxColors, int depth);
    ~OctreeQuantizer();
    OctreeQuantizer(const OctreeQuantizer &) = delete;
    OctreeQuantizer &operator=(const OctreeQuantizer &) = delete;

    /** Adds every pixel of `image`, as red, green and blue of 32-bit RGB (alpha is ignored). */
    void addImage(const QImage &image);
    void addColor(uchar red, uchar green, uchar blue);

    int leafCount() const { return m_leafCount; }
    /**
     * The colours of the leaves, depth first from child 0 to 7, each the
     * average of its pixels with alpha 255; the rest of the 256 entries is
     * 0. A leaf that no pixel reached gives black.
     */
    QRGBPal palette() const;

private:
    struct Node;

    Node *newNode(int level);
    /** Folds one node into a leaf; false when there is none left to fold. */
    bool reduce();

    int m_maxColors;
    int m_depth;
    Node *m_root;
    int m_leafCount = 0;
    /** Per level, the inner nodes that can still be folded, newest first. */
    Node *m_reducible[8] = {};
};
