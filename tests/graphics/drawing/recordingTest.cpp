#include "drawingTestSupport.h"

#include "drawing/gllistidregistry.h"
#include "drawing/glnulldrawer.h"
#include "drawing/glrecording.h"
#include "drawing/glrenderdrawer.h"

#include <gtest/gtest.h>

using namespace oxGraphics::openGL;

class recordingTest : public oxtest::glTest {
protected:
    oxtest::drawingHost mHost;
};

TEST_F(recordingTest, consecutiveIdsSkipReservedOnesAndReplay) {
    auto& registry = glListIdRegistry::instance();
    glRenderDrawer drawer(&mHost);
    const std::uint32_t n = registry.lastIssued();
    registry.reserve(n + 3);

    std::vector<ox::refPtr<oxGraphics::iRecorded>> recordings;
    for (int i = 0; i < 3; ++i) {
        drawer.beginRecording();
        EXPECT_TRUE(drawer.isRecording());
        drawer.drawPoint({0.5, 0.5, 0});
        recordings.push_back(drawer.endRecording());
        EXPECT_FALSE(drawer.isRecording());
        EXPECT_EQ(oxtest::readGlInteger(GL_LIST_INDEX), 0) << "the list is closed";
    }
    std::vector<std::uint32_t> ids;
    for (const auto& r : recordings) ids.push_back(dynamic_cast<glRecording*>(r.get())->listId());
    EXPECT_EQ(ids, (std::vector<std::uint32_t>{n + 1, n + 2, n + 4}));

    EXPECT_TRUE(drawer.isRecordingValid(recordings[0]));
    EXPECT_FALSE(drawer.isRecordingValid({}));
    oxtest::setUpLitView(64);
    EXPECT_EQ(oxtest::countPrimitives(oxtest::feedback([&] { drawer.drawRecording(recordings[0]); }), GL_POINT_TOKEN), 1)
        << "nothing was drawn while compiling; the replay draws the point";

    // Destroying a recording deletes its list and takes its id out of the reserved set.
    registry.reserve(n + 1);
    recordings[0].reset();
    EXPECT_FALSE(glIsList(n + 1));
    EXPECT_FALSE(registry.isReserved(n + 1));
    registry.release(n + 3);
}

TEST_F(recordingTest, aRecordingOfADestroyedContextIsInvalidAndDeletesNothingElsewhere) {
    auto second = oxGraphics::openGL::createHeadlessContext({16, 16, false});
    ASSERT_TRUE(second);
    ox::refPtr<glRecording> recording = glRecording::create(second);
    ASSERT_TRUE(recording);
    glBegin(GL_POINTS);
    glVertex3f(0, 0, 0);
    glEnd();
    EXPECT_TRUE(recording->endCompiling());
    const std::uint32_t id = recording->listId();
    EXPECT_TRUE(recording->isValid());

    // The same name in the surviving context: display-list names are per context.
    ASSERT_TRUE(oxtest::sharedGlContext()->makeCurrent());
    glNewList(id, GL_COMPILE);
    glEndList();
    second->destroy();
    ASSERT_TRUE(oxtest::sharedGlContext()->makeCurrent());

    EXPECT_FALSE(recording->isValid());
    EXPECT_EQ(recording->listId(), 0u);
    glRenderDrawer drawer(&mHost);
    EXPECT_FALSE(drawer.isRecordingValid(ox::refPtr<oxGraphics::iRecorded>(recording.get())));
    recording.reset();
    EXPECT_TRUE(glIsList(id)) << "the surviving context's list was not deleted";
    glDeleteLists(id, 1);
}

TEST_F(recordingTest, skippingAndTheNullDrawerNeverLeaveAListOpen) {
    // A transparent colour arriving mid-recording: the list is closed but handed out empty.
    glRenderDrawer render(&mHost);
    render.beginRecording();
    render.setColor({1, 2, 3}, 0.5f);
    EXPECT_FALSE(render.endRecording());
    EXPECT_EQ(oxtest::readGlInteger(GL_LIST_INDEX), 0);
    render.beginRecording();
    EXPECT_FALSE(render.isRecording()) << "beginRecording obeys the skip flag";

    glNullDrawer null(&mHost);
    null.beginRecording();
    ASSERT_TRUE(null.isRecording());
    const std::uint32_t id = glListIdRegistry::instance().lastIssued();
    null.drawMesh(oxGeo::mesh3d(), 0);
    EXPECT_FALSE(null.endRecording()) << "compiled and discarded";
    EXPECT_EQ(oxtest::readGlInteger(GL_LIST_INDEX), 0);
    EXPECT_FALSE(glIsList(id));
}
