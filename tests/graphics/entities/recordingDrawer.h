#pragma once
// A software iDrawer for entity tests: it logs every call by name, keeps a matrix stack, and
// emulates recordings the way display lists behave — operations issued while recording are only
// stored, replaying runs them against the current state (a matrix product in a recording stays
// on the matrix after the replay). What actually gets drawn is collected with its colour and its
// points in world space.
#include "oxdrawer.h"

#include "oxrefobj.h"

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace oxtest {

class recordingDrawer;

class fakeRecording : public oxGraphics::iRecorded, public ox::refObj {
public:
    bool isValid() override { return mValid; }
    bool mValid = true;
    std::vector<std::function<void(recordingDrawer&)>> mOps;
};

/// One primitive that reached the "screen".
struct drawnItem {
    std::string kind;   // "mesh", "points", "polyline"
    ox::rgbColor color;
    std::vector<oxGeo::point3d> worldPoints;
};

class recordingDrawer : public oxGraphics::iDrawer {
public:
    std::vector<std::string> mCalls;
    std::vector<drawnItem> mDrawn;
    std::vector<oxGeo::matrix3d> mStack{oxGeo::matrix3d()};
    ox::rgbColor mColor;
    float mLineWidth = 0.0f;
    float mPointSize = 0.0f;
    std::vector<ox::refPtr<fakeRecording>> mMade;   // every recording handed out, oldest first

    int count(std::string_view name) const { return int(std::count(mCalls.begin(), mCalls.end(), name)); }
    void clearLog() {
        mCalls.clear();
        mDrawn.clear();
    }

    std::int64_t auxTag() const override { return 0; }
    void pushMatrix() override { log("pushMatrix", [](recordingDrawer& d) { d.mStack.push_back(d.mStack.back()); }); }
    void multMatrix(const oxGeo::matrix3d& m) override {
        log("multMatrix", [m](recordingDrawer& d) { d.mStack.back() = d.mStack.back() * m; });
    }
    void popMatrix() override { log("popMatrix", [](recordingDrawer& d) { d.mStack.pop_back(); }); }
    void setColor(const ox::rgbColor& c, float) override { log("setColor", [c](recordingDrawer& d) { d.mColor = c; }); }
    void setLineWidth(float w) override { log("setLineWidth", [w](recordingDrawer& d) { d.mLineWidth = w; }); }
    void setPointSize(float s) override { log("setPointSize", [s](recordingDrawer& d) { d.mPointSize = s; }); }
    void drawPoint(const oxGeo::point3d&) override {}
    void drawPoints(const std::vector<oxGeo::point3d>& pts) override { emit("drawPoints", "points", pts); }
    void drawLine(const oxGeo::point3d&, const oxGeo::point3d&, bool) override {}
    void drawArrowHead(const oxGeo::point3d&, const oxGeo::point3d&, float, float) override {}
    void drawStippledLine(const oxGeo::point3d&, const oxGeo::point3d&, int, bool) override {}
    void drawPolyline(const std::vector<oxGeo::point3d>& pts) override { emit("drawPolyline", "polyline", pts); }
    void drawMesh(const oxGeo::mesh3d& mesh, int) override { emit("drawMesh", "mesh", mesh.vertices()); }
    void drawMeshPatchColors(const oxGeo::mesh3d&, const std::vector<ox::rgbColor>&, const ox::rgbColor&,
                             const ox::rgbColor&, int) override {}
    void drawPatch(const oxGeo::indexedTrianglePatch3d&, int) override {}
    void drawCylinder(const oxGeo::point3d&, const oxGeo::point3d&, float, float, bool, bool, int, int) override {}
    void drawDisk(const oxGeo::point3d&, const oxGeo::vector3d&, float, int, int) override {}
    void drawSphere(const oxGeo::point3d&, float, int, int, int) override {}
    void drawText(const ox::string&, const ox::string&) override {}
    void drawMeshGradient(const oxGeo::mesh3d&, float, const ox::rgbColor&, const ox::rgbColor&, const oxGeo::point3d&,
                          const oxGeo::point3d&) override {}
    bool isRecordingValid(const ox::refPtr<oxGraphics::iRecorded>& r) const override {
        const auto* recording = dynamic_cast<fakeRecording*>(r.get());
        return recording != nullptr && recording->mValid;
    }
    bool isRecording() const override { return bool(mActive); }
    void drawRecording(const ox::refPtr<oxGraphics::iRecorded>& r) override {
        mCalls.push_back("drawRecording");
        auto* recording = dynamic_cast<fakeRecording*>(r.get());
        if (recording == nullptr || !recording->mValid) return;
        for (const auto& op : recording->mOps) op(*this);
    }
    void pushName(unsigned) override {}
    void popName() override {}
    bool isTransparentPass() const override { return false; }
    const wchar_t* sceneName() const override { return L""; }
    bool sceneViewRayAt(int, int, oxGeo::ray<oxGeo::_space3d>&) const override { return false; }
    void beginRecording() override {
        mCalls.push_back("beginRecording");
        mActive = new fakeRecording;
    }
    ox::refPtr<oxGraphics::iRecorded> endRecording() override {
        mCalls.push_back("endRecording");
        mMade.push_back(mActive);
        ox::refPtr<oxGraphics::iRecorded> done(mActive.get());
        mActive.reset();
        return done;
    }

private:
    using op = std::function<void(recordingDrawer&)>;
    // While recording, the operation is stored for replay; otherwise it acts at once.
    void log(const char* name, op action = {}) {
        mCalls.push_back(name);
        if (!action) return;
        if (mActive)
            mActive->mOps.push_back(std::move(action));
        else
            action(*this);
    }
    void emit(const char* name, const char* kind, std::vector<oxGeo::point3d> points) {
        log(name, [kind, points = std::move(points)](recordingDrawer& d) {
            drawnItem item{kind, d.mColor, {}};
            for (const auto& p : points) item.worldPoints.push_back(d.mStack.back() * p);
            d.mDrawn.push_back(std::move(item));
        });
    }

    ox::refPtr<fakeRecording> mActive;
};

} // namespace oxtest
