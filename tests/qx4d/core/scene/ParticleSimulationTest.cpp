// The particle simulation on the processor: a seeded emitter followed step by step against
// the equations worked out here with the same random sequence, the spawning rate and its
// quirk, deaths, speed clamps, spin, collisions, revolution, emitters that feed each other,
// and values no file should hold.
#include "platform/os/CRuntime.h"
#include "qx4d/core/FileManager.h"
#include "qx4d/core/scene/ParticleSystem.h"
#include "tests/qx4d/core/TestFiles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace qx4d::test {
namespace {

/// The Windows C runtime's generator, written out again: the draws the simulation must
/// have made, in the order the spawn makes them.
class Sequence {
public:
    explicit Sequence(uint32_t seed) : state(seed) {}
    int Next()
    {
        state = state * 214013u + 2531011u;
        return int((state >> 16) & 0x7FFF);
    }
    double Unit() { return double(Next()) * 3.051851e-05; }
    float Range(float min, float max) { return float((double(max) - min) * Unit() + min); }
    void Skip(int draws)
    {
        for (int i = 0; i < draws; ++i) Next();
    }

private:
    uint32_t state;
};

class ParticleSimulationTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(files.Mount(u"EMITTERS", folder.Wide())); }

    /// A system of the emitters whose bodies are given, in that order.
    void Load(const std::vector<std::string>& bodies)
    {
        std::string list = "<ParticleSystem>";
        for (size_t i = 0; i < bodies.size(); ++i) {
            const std::string name = "e" + std::to_string(i) + ".xml";
            folder.Write("Test/" + name, "<UE2SpriteEmitter>" + bodies[i] + "</UE2SpriteEmitter>");
            list += "<UE2SpriteEmitter Source=\"" + name + "\"/>";
        }
        folder.Write("Test/System.xml", list + "</ParticleSystem>");
        system.LoadEmitters(u"Test\\System.xml");
        ASSERT_EQ(system.instances.size(), bodies.size());
    }
    /// One step of the system's clock.
    void Step(float dt)
    {
        time += dt;
        system.Update(time, dt);
    }
    UE2EmitterInstance& Emitter(size_t index) { return *system.instances.at(index); }
    const Particle& At(size_t emitter, size_t index) { return Emitter(emitter).particles.at(index); }

    TempFolder folder;
    FileManager files;
    ParticleSystem system;
    float time = 0.0f;
};

// Each new particle draws, in order: its life, the three axes of its box, its velocity,
// its two sizes, its cell, four colour channels, its spin, the spin's sign and its rate.
TEST_F(ParticleSimulationTest, ASeededEmitterFollowsTheEquations)
{
    Load({R"(<General MaxParticles="10" ParticlesPerSecond="4"/><Time LifetimeRange="1 2"/>
             <Movement Acceleration="0 -1 0" StartVelocityRange="-1 1, 0 2, 0 0"/>
             <Location><BoxDomain Min="0 0 0" Max="1 1 1"/></Location>)"});
    system.position = {2, 0, 0};
    qx::os::srand(7);
    Sequence draws(7);
    struct Expected {
        float lifetime;
        Float3 position, velocity;
    };
    std::vector<Expected> born;
    const float dt = 0.25f, ay = -1.0f * dt;
    for (int step = 0; step < 3; ++step) {
        // The live ones move first: velocity by the acceleration, then position by it.
        for (Expected& p : born) {
            p.velocity[1] += ay;
            for (size_t axis = 0; axis < 3; ++axis) p.position[axis] += p.velocity[axis] * dt;
        }
        // Then 4 a second makes one new particle each quarter second.
        Expected p;
        p.lifetime = draws.Range(1, 2);
        p.position = {draws.Range(0, 1) + 2.0f, draws.Range(0, 1), draws.Range(0, 1)};
        p.velocity = {draws.Range(-1, 1), draws.Range(0, 2), draws.Range(0, 0)};
        draws.Skip(2 + 1 + 4 + 3);
        born.push_back(p);
        Step(dt);
    }
    ASSERT_EQ(Emitter(0).Count(), 3);
    for (size_t i = 0; i < born.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_FLOAT_EQ(At(0, i).lifetime, born[i].lifetime);
        for (size_t axis = 0; axis < 3; ++axis) {
            EXPECT_FLOAT_EQ(At(0, i).position[axis], born[i].position[axis]);
            EXPECT_FLOAT_EQ(At(0, i).velocity[axis], born[i].velocity[axis]);
        }
    }
}

TEST_F(ParticleSimulationTest, AParticleDiesInTheStepItsAgeReachesItsLife)
{
    Load({R"(<General ParticlesPerSecond="4"/><Time LifetimeRange="0.5 0.5"/>)"});
    std::vector<int> counts;
    for (int step = 0; step < 5; ++step) {
        Step(0.25f);
        counts.push_back(Emitter(0).Count());
    }
    // One a step, each living through one step of age 0.25 and dying at 0.5.
    EXPECT_EQ(counts, (std::vector<int>{1, 2, 2, 2, 2}));
}

TEST_F(ParticleSimulationTest, TheRateSubtractsItselfAndStopsAtTheMostParticles)
{
    // A rate of 2 over a second makes 2 and takes 2 x 2 off the accumulator: it ends at 0.
    Load({R"(<General ParticlesPerSecond="2"/>)", R"(<General MaxParticles="3" ParticlesPerSecond="100"/>)"});
    Step(1.0f);
    EXPECT_EQ(Emitter(0).Count(), 2);
    EXPECT_EQ(Emitter(0).accumulator, 0.0f);
    EXPECT_EQ(Emitter(1).Count(), 3);
    Step(1.0f);
    EXPECT_EQ(Emitter(1).Count(), 3) << "at its most an emitter makes none";
    EXPECT_EQ(Emitter(1).spawnedThisRun, 3);
    // 10 a second in steps of 0.04: 0.4 of a particle per step until a step reaches one.
    Load({R"(<General ParticlesPerSecond="10"/>)"});
    for (int step = 0; step < 3; ++step) Step(0.04f);
    EXPECT_EQ(Emitter(0).Count(), 1) << "the third step's 1.2 makes the first";
}

TEST_F(ParticleSimulationTest, AutomaticSpawningFillsTheEmitterOverTheLongestLife)
{
    Load({R"(<General MaxParticles="8" AutomaticSpawning="true"/><Time LifetimeRange="2 1"/>)"});
    Step(0.5f);
    EXPECT_EQ(Emitter(0).Count(), 2) << "8 over the larger life of 2: 4 a second";
}

TEST_F(ParticleSimulationTest, SpeedClampsHoldOnlyWithAMostSpeedInForce)
{
    Load({R"(<Movement ClampVelocity="2 10"/>)", R"(<Movement ClampVelocity="2"/>)",
          R"(<Movement StartVelocityRange="3 3, 4 4, 0 0" ClampVelocity="0 2.5"/>)"});
    Step(1.0f);
    EXPECT_EQ(At(0, 0).velocity, (Float3{0, 2, 0})) << "no speed at all points up";
    EXPECT_EQ(At(1, 0).velocity, (Float3{0, 0, 0})) << "the default most speed turns both clamps off";
    EXPECT_FLOAT_EQ(At(2, 0).velocity[0], 1.5f);
    EXPECT_FLOAT_EQ(At(2, 0).velocity[1], 2.0f);
}

TEST_F(ParticleSimulationTest, TheSpinsSignFollowsItsChance)
{
    qx::os::srand(12345);
    Load(
        {R"(<General MaxParticles="40" ParticlesPerSecond="40"/><Rotation SpinsPerSecondRange="1 2" SpinCCWorCW="0"/>)",
         R"(<General MaxParticles="40" ParticlesPerSecond="40"/><Rotation SpinsPerSecondRange="1 2" SpinCCWorCW="1"/>)"});
    Step(1.0f);
    ASSERT_EQ(Emitter(1).Count(), 40);
    for (int i = 0; i < 40; ++i) {
        EXPECT_GT(At(0, size_t(i)).spinRate, 0.0f);
        EXPECT_LT(At(1, size_t(i)).spinRate, 0.0f);
    }
}

// A drop at y = 1 falling at 2 a second onto the floor y = 0: it stops 1e-5 short of the
// floor after (1 - 1e-5) / 2 of the step, turns up, and flies the rest of the step. The
// second emitter gets three particles at the point of impact, thrown along the normal.
TEST_F(ParticleSimulationTest, ACollisionBouncesOffThePlaneAndSpawnsAtThePoint)
{
    Load({R"(<Time LifetimeRange="10 10"/><Movement StartVelocityRange="0 0, -2 -2, 0 0"/>
             <Location><PointDomain Center="0 1 0"/></Location>
             <Collision UseCollision="true" UseCollisionPlanes="true" SpawnFromOtherEmitter="1" SpawnAmount="3">
               <Floor x="0" y="1" z="0" d="0"/></Collision>)",
          R"(<General ParticlesPerSecond="0"/><Time LifetimeRange="10 10"/>)"});
    Step(1.0f);
    Step(1.0f);
    const float f = float((1.0 - 1e-05) / 2.0);
    const float impact = 1.0f - 2.0f * f;
    EXPECT_FLOAT_EQ(At(0, 0).position[1], impact + 2.0f * (1.0f - f));
    EXPECT_EQ(At(0, 0).velocity, (Float3{0, 2, 0}));
    // Born during the first emitter's update, they make their own step after it.
    ASSERT_EQ(Emitter(1).Count(), 3);
    EXPECT_EQ(At(1, 2).velocity, (Float3{0, 1, 0}));
    EXPECT_FLOAT_EQ(At(1, 2).position[1], impact + 1.0f);
}

TEST_F(ParticleSimulationTest, RevolutionTurnsAroundItsCentre)
{
    Load({R"(<Time LifetimeRange="10 10"/><Location><PointDomain Center="1 0 0"/></Location>
             <Revolution UseRevolution="true" RevolutionCenterOffsetRange="0,0,0,0,0,0"
                         RevolutionsPerSecondRange="0 0, 0.25 0.25, 0 0"/>)"});
    Step(1.0f);
    Step(1.0f);
    // A quarter turn of heading a second: +x turns to -z.
    EXPECT_NEAR(At(0, 0).position[0], 0.0f, 1e-6f);
    EXPECT_NEAR(At(0, 0).position[2], -1.0f, 1e-6f);
}

TEST_F(ParticleSimulationTest, DeathsAndLocationsFeedOtherEmitters)
{
    Load(
        {R"(<General ParticlesPerSecond="1"/><Time LifetimeRange="0.5 0.5" SpawnFromOtherEmitterWhenDie="1, 1, 2"/>
             <Location><PointDomain Center="3 0 0"/></Location>)",
         R"(<General ParticlesPerSecond="0"/><Time LifetimeRange="10 10"/>)",
         R"(<General ParticlesPerSecond="1"/><Location AddLocationEmitter="1"><PointDomain Center="0 1 0"/></Location>)",
         R"(<General ParticlesPerSecond="1"/><Time SpawnFromOtherEmitterWhenDie="1, 0, 5"/><Location AddLocationEmitter="9"/>)"});
    Step(1.0f);
    EXPECT_EQ(Emitter(2).Count(), 0) << "no particle to take a place from";
    EXPECT_EQ(Emitter(3).Count(), 0) << "no emitter of that index";
    Step(1.0f);
    // The first particle died where it was: the heir's two are born there, and the third
    // emitter, updated after them, has a place to take.
    ASSERT_EQ(Emitter(1).Count(), 2);
    EXPECT_EQ(At(1, 1).position, (Float3{3, 0, 0}));
    ASSERT_EQ(Emitter(2).Count(), 1);
    EXPECT_EQ(At(2, 0).position, (Float3{3, 1, 0})) << "its own domain plus a particle of emitter 1";
}

TEST_F(ParticleSimulationTest, AnEarlierTimeRestartsTheSystem)
{
    Load({R"(<General ParticlesPerSecond="4"/>)"});
    Step(1.0f);
    Step(1.0f);
    EXPECT_EQ(Emitter(0).Count(), 8);
    system.Update(0.5f, 0.25f);
    EXPECT_EQ(Emitter(0).Count(), 1) << "emptied, then one step's worth";
}

TEST_F(ParticleSimulationTest, ABigBatchIsBornInParallelWithEveryValueDrawn)
{
    Load({R"(<General MaxParticles="5000" ParticlesPerSecond="5000"/><Time LifetimeRange="2 3"/>
             <Location><BoxDomain Min="0 0 0" Max="1 1 1"/></Location>
             <Color ColorMultiplierRange="10 20, 30 40, 50 60, 70 80"/>)"});
    Step(1.0f);
    ASSERT_EQ(Emitter(0).Count(), 5000);
    for (int i = 0; i < 5000; ++i) {
        const Particle& p = At(0, size_t(i));
        ASSERT_TRUE(p.lifetime >= 2.0f && p.lifetime <= 3.0f) << i;
        ASSERT_TRUE(p.position[2] >= 0.0f && p.position[2] <= 1.0f) << i;
        const uint32_t red = (p.color >> 16) & 0xFF, alpha = p.color >> 24;
        ASSERT_TRUE(red >= 10 && red <= 20 && alpha >= 70 && alpha <= 80) << std::hex << p.color;
    }
}

TEST_F(ParticleSimulationTest, AbsurdValuesNeitherCrashNorGrowWithoutBound)
{
    Load(
        {R"(<General MaxParticles="50" ParticlesPerSecond="1e30"/><Time LifetimeRange="-1 nan"/>)",
         R"(<General MaxParticles="50" AutomaticSpawning="true"/><Time LifetimeRange="0 0" SpawnFromOtherEmitterWhenDie="1, 1, 1000000"/>
             <Texture USubdivisions="3" SubdivisionStart="9" SubdivisionEnd="2"/>)",
         R"(<General MaxParticles="0"/>)",
         R"(<Collision UseCollision="true" UseCollisionPlanes="true" SpawnFromOtherEmitter="-7" SpawnAmount="-3"
               DampingFactorRange="1e30 1e30, 1e30 1e30, 1e30 1e30"><P y="1"/><P y="-1"/></Collision>)"});
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    for (const float dt : {0.1f, nan, inf, -1.0f, 1e30f, 0.1f, 0.1f}) {
        Step(dt);
        for (size_t e = 0; e < system.instances.size(); ++e) {
            EXPECT_GE(Emitter(e).Count(), 0);
            EXPECT_LE(size_t(Emitter(e).Count()), Emitter(e).particles.size());
        }
    }
}

}  // namespace
}  // namespace qx4d::test
