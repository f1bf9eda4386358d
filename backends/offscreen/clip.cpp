// Clip regions of the offscreen back end: unions of rectangles that the
// canvas owns, applied to Cairo's clip when set.
#include <algorithm>
#include <climits>

#include "backends/offscreen/canvas_p.h"

namespace qvgui::offscreen::detail {
namespace {

// A region pointer the canvas made and has not destroyed, else null: a
// foreign or stale pointer is ignored rather than followed.
Region* find(CanvasState& st, void* region) {
  for (const auto& r : st.regions)
    if (r.get() == region) return r.get();
  return nullptr;
}

bool isEmpty(const qvrect& r) { return r.right <= r.left || r.bottom <= r.top; }

qvrect intersect(const qvrect& a, const qvrect& b) {
  return qvrect{std::max(a.top, b.top), std::max(a.left, b.left), std::min(a.bottom, b.bottom),
                std::min(a.right, b.right)};
}

void* CreateClipRegion(WinRec_tag* win) {
  CanvasState& st = stateOf(win);
  st.regions.push_back(std::make_unique<Region>());
  return st.regions.back().get();
}

void DestroyClipRegion(WinRec_tag* win, void* region) {
  CanvasState& st = stateOf(win);
  st.regions.erase(std::remove_if(st.regions.begin(), st.regions.end(),
                                  [region](const std::unique_ptr<Region>& r) { return r.get() == region; }),
                   st.regions.end());
}

void UnionRectRegion(WinRec_tag* win, const qvrect* rect, void* region) {
  Region* r = find(stateOf(win), region);
  if (r && rect && !isEmpty(*rect)) r->rects.push_back(*rect);
}

// Destination last, as in UnionRectRegion: into = from | into.
void UnionRegions(WinRec_tag* win, void* from, void* into) {
  CanvasState& st = stateOf(win);
  Region* a = find(st, from);
  Region* b = find(st, into);
  if (!a || !b || a == b) return;
  b->rects.insert(b->rects.end(), a->rects.begin(), a->rects.end());
}

// into = from & into; the pieces of a union of rectangles intersect pairwise.
void IntersectRegions(WinRec_tag* win, void* from, void* into) {
  CanvasState& st = stateOf(win);
  Region* a = find(st, from);
  Region* b = find(st, into);
  if (!a || !b || a == b) return;
  std::vector<qvrect> out;
  for (const qvrect& x : a->rects)
    for (const qvrect& y : b->rects) {
      const qvrect s = intersect(x, y);
      if (!isEmpty(s)) out.push_back(s);
    }
  b->rects = std::move(out);
}

void RectEnclosingRegion(WinRec_tag* win, qvrect* out, void* region) {
  if (!out) return;
  Region* r = find(stateOf(win), region);
  if (!r || r->rects.empty()) {
    *out = qvrect{0, 0, 0, 0};
    return;
  }
  qvrect box{INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
  for (const qvrect& x : r->rects)
    box = qvrect{std::min(box.top, x.top), std::min(box.left, x.left), std::max(box.bottom, x.bottom),
                 std::max(box.right, x.right)};
  *out = box;
}

bool RectInRegion(WinRec_tag* win, const qvrect* rect, void* region) {
  Region* r = find(stateOf(win), region);
  if (!r || !rect) return false;
  return std::any_of(r->rects.begin(), r->rects.end(),
                     [rect](const qvrect& x) { return !isEmpty(intersect(x, *rect)); });
}

// Later changes to the region take effect at the next SetClipRegion.
void SetClipRegion(WinRec_tag* win, void* region) { applyClip(stateOf(win), region); }

void* GetClipRegion(WinRec_tag* win) { return wm_GetLastClipRegion(win); }

}  // namespace

void applyClip(CanvasState& st, void* region) {
  cairo_new_path(st.cr);
  cairo_reset_clip(st.cr);
  if (!region) return;
  Region* r = find(st, region);
  if (!r) return;
  for (const qvrect& x : r->rects)
    cairo_rectangle(st.cr, x.left, x.top, double(x.right) - x.left, double(x.bottom) - x.top);
  // Overlapping rectangles of a union must not cancel out.
  cairo_set_fill_rule(st.cr, CAIRO_FILL_RULE_WINDING);
  cairo_clip(st.cr);
}

void installClip(winMethods_tag* m) {
  swm_CreateClipRegion(m, CreateClipRegion);
  swm_DestroyClipRegion(m, DestroyClipRegion);
  swm_UnionRectRegion(m, UnionRectRegion);
  swm_UnionRegions(m, UnionRegions);
  swm_IntersectRegions(m, IntersectRegions);
  swm_RectEnclosingRegion(m, RectEnclosingRegion);
  swm_RectInRegion(m, RectInRegion);
  swm_SetClipRegion(m, SetClipRegion);
  swm_GetClipRegion(m, GetClipRegion);
}

}  // namespace qvgui::offscreen::detail
