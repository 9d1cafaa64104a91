// Model files by chance.
#pragma once

#include <random>
#include <string>
#include <vector>

namespace pelt::test {

// Texts of models that mostly load, with everything that lines can say, and some that do not.
class RandomModelText {
public:
    explicit RandomModelText(uint32_t seed) : random_(seed) {}
    std::string next() {
        text_.clear();
        ids_.clear();
        joints_ = pick(4);
        for (int joint = 0; joint < joints_; ++joint) { put_joint(joint); }
        for (int blend = pick(3); blend > 0; --blend) { line({"blend", joint_name(), joint_name(), number(1, 4)}); }
        put_points();
        for (int layer = pick(3); layer >= 0; --layer) { put_layer(layer); }
        for (int child = pick(3); child > 1; --child) {
            line({"child", "wing", real(), real(), real(), real(), real(), real(), "0", "x3.5", number(-9, 9)});
        }
        return text_;
    }

private:
    int pick(int below) { return static_cast<int>(random_() % static_cast<uint32_t>(below)); }
    bool chance(int in) { return pick(in) == 0; }
    std::string number(int low, int high) { return std::to_string(low + pick(high - low + 1)); }
    std::string real() {
        static constexpr const char* ODD[] = {"0",
                                              "-0.0",
                                              "1",
                                              "0.1",
                                              "99999999999.5",
                                              "-",
                                              "5.",
                                              ".5",
                                              "0.00000000000000000000000000000000000000000001"};
        return chance(4) ? ODD[pick(9)] : std::to_string(static_cast<double>(random_()) / 1e9 - 2.0);
    }
    std::string share() { return std::to_string(static_cast<double>(random_()) / 4294967296.0); }
    std::string id() { return std::to_string(ids_[static_cast<size_t>(pick(static_cast<int>(ids_.size())))]); }
    std::string joint_name() {
        static constexpr const char* NAMES[] = {"hip", "\"left knee\"", "a\"b", "world",
                                                "a_joint_with_a_name_of_more_than_32_bytes"};
        return NAMES[pick(5)];
    }
    std::string axis() {
        static constexpr const char* AXES[] = {"x", "y", "z", "-x", "-y", "-z"};
        return AXES[pick(6)];
    }
    void line(const std::vector<std::string>& words) {
        for (const std::string& word : words) { text_ += (word == words.front() ? "" : " ") + word; }
        text_ += "\n";
    }
    void append(const std::string& word) { text_ += " " + word; }
    void put_joint(int joint) {
        static constexpr const char* NAMES[] = {"hip", "\"left knee\"", "a\"b",
                                                "a_joint_with_a_name_of_more_than_32_bytes"};
        const std::string name = NAMES[joint];
        std::string parent = joint_name();
        if (parent == name) { parent = "gone"; }
        line({"joint", name, number(-9, 9), number(-9, 9), number(0, 1 << 25), parent, number(-1, 4)});
    }
    void put_points() {
        text_ += "points\n";
        const int base = chance(4) ? 32766 : chance(4) ? 65530 : 1;
        for (int count = 1 + pick(12); count > 0; --count) {
            ids_.push_back(chance(6) ? 1 + pick(70000) : base + pick(20));
            line({std::to_string(ids_.back()), number(-99, 99), number(-99, 99), number(-99, 99)});
            text_.pop_back();
            if (chance(2)) {
                append(real());
                if (chance(3)) { append(joint_name() + " " + joint_name()); }
            }
            text_ += "\n";
        }
        if (chance(2)) { text_ += "normals\n"; }
        while (text_.find("normals") != std::string::npos && !chance(4)) {
            line(chance(3) ? std::vector<std::string>{id(), number(0, 360), number(0, 360)}
                           : std::vector<std::string>{chance(8) ? number(200, 210) : id(), real(), real(), "0.7"});
        }
        if (chance(2)) {
            text_ += "gouraud\n";
            while (!chance(4)) { line({id(), number(-9, 300), number(0, 255), number(0, 255), number(0, 255)}); }
        }
    }
    void put_corners(int count) {
        for (int i = 0; i < count; ++i) { append(id()); }
    }
    void put_primitive() {
        static constexpr int CORNERS[] = {3, 4, 0, 3, 4};
        const int type = pick(5);
        text_ += std::to_string(type);
        put_corners(type == 2 ? 3 + pick(5) : CORNERS[type]);
        const int more = pick(4);
        if (type >= 3 && more > 0) { append(type == 3 ? number(0, 4) : std::to_string(2 * pick(3))); }
        if ((type == 0 || type == 1 || type >= 3) && more > 1) { put_corners(CORNERS[type]); }
        if (type >= 3 && more > 2) { put_corners(2 * CORNERS[type]); }
        text_ += "\n";
    }
    void put_images() {
        if (chance(2)) { line({"invisible", share(), share(), "1"}); }
        if (chance(2)) {
            line({"image", chance(2) ? "a.tga" : "\"a b.tga\"", axis(), axis()});
            text_.pop_back();
            text_ += chance(2) ? " repeat " + share() + " -" + share() + "\n" : "\n";
        }
        if (chance(3)) { line({"mirrorimage", "b.tga"}); }
        if (chance(3)) { line({"reflect", "b.tga", share()}); }
        if (chance(4)) { line({"invisible", "0.5", share(), "0"}); }
    }
    void put_layer(int number_of_layer) {
        static constexpr const char* NAMES[] = {"roof", "\"two words\"", "a_layer_with_a_name_of_more_than_31"};
        line({"layer", NAMES[chance(6) ? 2 : number_of_layer % 2], number(-9, 300), number(0, 127), "5",
              chance(2) ? "singlesided" : "doublesided"});
        text_.pop_back();
        text_ += (chance(2) ? " mirror " + axis() : "") + "\n";
        if (text_.ends_with("31 5\n") || chance(6)) { return; }
        if (chance(2)) { line({"transparency", share()}); }
        for (int section = pick(4); section > 0; --section) {
            text_ += "triangles\n";
            while (!chance(4)) { put_primitive(); }
            if (chance(2)) { text_ += "uvees\n"; }
            while (text_.ends_with("uvees\n") || (text_.rfind("uvees") != std::string::npos && chance(2))) {
                if (text_.rfind("triangles") > text_.rfind("uvees")) { break; }
                line({id(), real(), real()});
            }
            if (chance(2)) { put_images(); }
        }
        if (chance(2)) {
            text_ += "lines\n2";
            put_corners(1 + pick(6));
            text_ += "\n";
        }
    }

    std::mt19937 random_;
    std::string text_;
    std::vector<int> ids_;
    int joints_ = 0;
};

// The same text as people write it: with comments, remarks, tabs, wide columns, empty lines, other line ends, a mark at
// its beginning, no end at its end.
inline std::string by_hand(const std::string& text, std::mt19937& random) {
    const auto chance = [&](uint32_t in) { return random() % in == 0; };
    const bool returns = chance(3);
    const bool wide = chance(3);
    std::string out = chance(4) ? "\xEF\xBB\xBF" : "";
    bool quoted = false;
    for (const char c : text) {
        if (c == '"') { quoted = !quoted; }
        if (c == '\n') {
            if (chance(9)) { out += chance(2) ? " " : "\t"; }
            out += returns && !chance(9) ? "\r\n" : "\n";
            if (chance(9)) { out += "# a \xE9 remark\n"; }
            if (chance(9)) { out += chance(2) ? "\n" : ";nothing\r\n"; }
        } else if (c == ' ' && !quoted) {
            out += chance(20) ? "\t" : wide ? std::string(1 + random() % 4, ' ') : " ";
        } else {
            out += c;
        }
    }
    if (chance(4) && !out.empty() && out.back() == '\n') { out.pop_back(); }
    return out;
}

}  // namespace pelt::test
