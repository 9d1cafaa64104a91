// Chooses the scale of an import.
#include "interchange/whole_scale.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/text.h"

namespace pelt {

namespace {

constexpr double LEAST_SIZE = 100.0;     // of a model that is whole as it stands
constexpr double GOOD_SIZE = 10000.0;    // from which half a unit is less than a ten-thousandth
constexpr double LARGEST_SIZE = 100000;  // of a model that is made larger to be whole
constexpr double EXACT = 1e-4;           // of a unit

struct SceneBox {
    double largest = 0.0;  // coordinate, without its sign
    Place low = {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity(),
                 std::numeric_limits<double>::infinity()};
    Place high = {-low[0], -low[1], -low[2]};
};

template <typename Action>
void for_each_place(const SourceScene& source, const Action& action) {
    for (const MeshPlace& at : source.places) {
        for (unsigned i = 0; i < at.mesh->mNumVertices; ++i) {
            const Place place = transformed(at.placement, at.mesh->mVertices[i]);
            if (is_finite(place)) { action(place); }
        }
    }
}

SceneBox box_of(const SourceScene& source) {
    SceneBox box;
    for_each_place(source, [&](const Place& place) {
        for (size_t i = 0; i < place.size(); ++i) {
            box.low[i] = std::min(box.low[i], place[i]);
            box.high[i] = std::max(box.high[i], place[i]);
            box.largest = std::max(box.largest, std::fabs(place[i]));
        }
    });
    return box;
}

bool is_whole_at(const SourceScene& source, double scale) {
    bool whole = true;
    for_each_place(source, [&](const Place& place) {
        for (const double component : place) {
            const double at = component * scale;
            whole = whole && std::fabs(at - std::round(at)) <= EXACT;
        }
    });
    return whole;
}

std::string number_text(double value) {
    std::string text = float_to_text(value, 9);
    while (text.back() == '0') { text.pop_back(); }
    if (text.back() == '.') { text.pop_back(); }
    return text;
}

}  // namespace

WholeScale choose_scale(const SourceScene& source, double wanted) {
    const SceneBox box = box_of(source);
    if (box.low[0] > box.high[0]) { return {0.0, {}, "it has no point with a place"}; }
    const double size = std::max({box.high[0] - box.low[0], box.high[1] - box.low[1], box.high[2] - box.low[2]});
    const auto fits = [&](double scale) { return box.largest * scale < LARGEST_COORDINATE; };
    if (wanted > 0.0) {
        const std::string text = number_text(wanted);
        if (!fits(wanted)) { return {0.0, {}, "at a scale of " + text + " its places go beyond 16777216"}; }
        return {wanted, "scale " + text, {}};
    }
    if (!(size > 0.0)) {
        return fits(1.0) ? WholeScale{1.0, "scale 1", {}} : WholeScale{0.0, {}, "its places go beyond 16777216"};
    }
    if (size >= LEAST_SIZE && fits(1.0) && is_whole_at(source, 1.0)) {
        return {1.0, "scale 1: all places are whole", {}};
    }
    constexpr int SMALLEST_POWER = -30;
    constexpr int LARGEST_POWER = 40;
    for (int power = SMALLEST_POWER; power <= LARGEST_POWER; ++power) {
        const double scale = std::pow(10.0, power);
        const double scaled = size * scale;
        if (scaled < LEAST_SIZE) { continue; }
        const bool next_fits = fits(scale * 10.0);
        const bool is_whole = scaled < LARGEST_SIZE && power > 0 && fits(scale) && is_whole_at(source, scale);
        if (!is_whole && scaled < GOOD_SIZE && next_fits) { continue; }
        if (!fits(scale)) { break; }
        const std::string exactly = ": all places are whole";
        const std::string nearly = ": places are kept within " + number_text(0.5 / scaled) + " of the size";
        return {scale, "scale " + number_text(scale) + (is_whole ? exactly : nearly), {}};
    }
    return {0.0, {}, "its places are so far from the origin that no scale keeps them"};
}

}  // namespace pelt
