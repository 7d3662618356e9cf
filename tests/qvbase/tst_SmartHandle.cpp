// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/SmartHandle.h>

#include <support/Random.h>

#include <QTest>
#include <QVector>

#include <atomic>
#include <memory>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

std::atomic<int> alive{0};

struct Animal {
    Animal() { ++alive; }
    Animal(Animal const&) = delete;
    Animal& operator=(Animal const&) = delete;
    virtual ~Animal() { --alive; }
    int legs = 4;
};

/// Its destructor is not where Animal has its own: deleting through the wrong pointer is noticed.
struct Named {
    virtual int label() const { return 7; }
    virtual int age() const { return 3; }
    virtual ~Named() = default;
};

/// Animal stands second: a handle on it holds another address than one on the whole object.
struct Dog : Named, Animal { };

struct LastHandle : Animal {
    explicit LastHandle(qvm::smart<Animal>& handle)
        : m_handle(handle)
    {
    }
    ~LastHandle() override { m_handle.reset(); }

private:
    qvm::smart<Animal>& m_handle;
};

QVector<void*> deleted;

void remember(void* handlee)
{
    deleted.append(handlee);
}

void deleteDog(void* handlee)
{
    deleted.append(handlee);
    delete static_cast<Dog*>(handlee);
}

} // namespace

class tst_SmartHandle : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void emptyHandle();
    void handleOfNullIsEmpty();
    void accessors();
    void lastHandleDeletes();
    void copyJoinsTheGroup();
    void copyOfAnEmptyHandleIsEmpty();
    void moveEmptiesTheSource();
    void assignmentLeavesTheOldGroup();
    void moveAssignment();
    void selfAssignment();
    void assignmentWithinAGroup();
    void resetConcernsOneHandle();
    void resetTwice();
    void resetToAnotherObject();
    void swapExchangesGroups();
    void comparison();
    void convertsToBase();
    void convertsToSecondBase();
    void baseHandleOutlivesDerivedHandle();
    void derivedHandleOutlivesBaseHandle();
    void convertsToConst();
    void doesNotConvertDownwards();
    void deleterIsCalledOnceWithTheHandlee();
    void deleterGetsTheOriginalPointerThroughAnotherBase();
    void deleterIsCalledWithNull();
    void nullDeleterDeletes();
    void handleeMayResetTheHandleItDiesThrough();
    void handleOnItself();
    void containersOfHandles();
    void threadsCopyAndRelease();
};

void tst_SmartHandle::init()
{
    deleted.clear();
}

void tst_SmartHandle::cleanup()
{
    QCOMPARE(alive.load(), 0);
}

void tst_SmartHandle::emptyHandle()
{
    qvm::smart<Animal> const handle;
    QVERIFY(handle.null());
    QVERIFY(!handle);
    QVERIFY(!handle.get());
}

void tst_SmartHandle::handleOfNullIsEmpty()
{
    qvm::smart<Animal> const handle(static_cast<Animal*>(nullptr));
    QVERIFY(handle.null());
    QVERIFY(handle == qvm::smart<Animal>());
}

void tst_SmartHandle::accessors()
{
    auto* const animal = new Animal;
    qvm::smart<Animal> const handle(animal);
    QVERIFY(!handle.null());
    QVERIFY(bool(handle));
    QCOMPARE(handle.get(), animal);
    QCOMPARE(&*handle, animal);
    QCOMPARE(handle->legs, 4);
}

void tst_SmartHandle::lastHandleDeletes()
{
    {
        qvm::smart<Animal> const handle(new Animal);
        QCOMPARE(alive.load(), 1);
    }
    QCOMPARE(alive.load(), 0);
}

void tst_SmartHandle::copyJoinsTheGroup()
{
    auto first = std::make_unique<qvm::smart<Animal>>(new Animal);
    qvm::smart<Animal> const second(*first);
    QCOMPARE(second.get(), first->get());
    first.reset();
    QCOMPARE(alive.load(), 1);
    QCOMPARE(second->legs, 4);
}

void tst_SmartHandle::copyOfAnEmptyHandleIsEmpty()
{
    qvm::smart<Animal> const empty;
    qvm::smart<Animal> const copy(empty);
    QVERIFY(copy.null());
    qvm::smart<Animal> assigned(new Animal);
    assigned = empty;
    QVERIFY(assigned.null());
    QCOMPARE(alive.load(), 0);
}

void tst_SmartHandle::moveEmptiesTheSource()
{
    qvm::smart<Animal> source(new Animal);
    Animal* const animal = source.get();
    qvm::smart<Animal> const target(std::move(source));
    QCOMPARE(target.get(), animal);
    QVERIFY(source.null());
    QCOMPARE(alive.load(), 1);
}

void tst_SmartHandle::assignmentLeavesTheOldGroup()
{
    qvm::smart<Animal> handle(new Animal);
    qvm::smart<Animal> const other(new Animal);
    handle = other;
    QCOMPARE(handle.get(), other.get());
    QCOMPARE(alive.load(), 1);
}

void tst_SmartHandle::moveAssignment()
{
    qvm::smart<Animal> handle(new Animal);
    qvm::smart<Animal> other(new Animal);
    Animal* const animal = other.get();
    handle = std::move(other);
    QCOMPARE(handle.get(), animal);
    QVERIFY(other.null());
    QCOMPARE(alive.load(), 1);
}

void tst_SmartHandle::selfAssignment()
{
    qvm::smart<Animal> handle(new Animal);
    qvm::smart<Animal>& same = handle;
    handle = same;
    QCOMPARE(alive.load(), 1);
    handle = std::move(same);
    QCOMPARE(alive.load(), 1);
    QCOMPARE(handle->legs, 4);
}

void tst_SmartHandle::assignmentWithinAGroup()
{
    qvm::smart<Animal> handle(new Animal);
    qvm::smart<Animal> const copy(handle);
    handle = copy;
    QCOMPARE(alive.load(), 1);
    QVERIFY(handle == copy);
}

void tst_SmartHandle::resetConcernsOneHandle()
{
    qvm::smart<Animal> first(new Animal);
    qvm::smart<Animal> second(first);
    first.reset();
    QVERIFY(first.null());
    QCOMPARE(alive.load(), 1);
    second.reset();
    QCOMPARE(alive.load(), 0);
}

void tst_SmartHandle::resetTwice()
{
    qvm::smart<Animal> handle(new Animal);
    handle.reset();
    handle.reset();
    QVERIFY(handle.null());
    QCOMPARE(alive.load(), 0);
}

void tst_SmartHandle::resetToAnotherObject()
{
    qvm::smart<Animal> handle(new Animal);
    auto* const other = new Animal;
    handle.reset(other);
    QCOMPARE(handle.get(), other);
    QCOMPARE(alive.load(), 1);
    handle.reset(nullptr);
    QVERIFY(handle.null());
    QCOMPARE(alive.load(), 0);
}

void tst_SmartHandle::swapExchangesGroups()
{
    qvm::smart<Animal> first(new Animal);
    qvm::smart<Animal> second;
    Animal* const animal = first.get();
    first.swap(second);
    QVERIFY(first.null());
    QCOMPARE(second.get(), animal);
    second.reset();
    QCOMPARE(alive.load(), 0);
}

void tst_SmartHandle::comparison()
{
    qvm::smart<Animal> const one(new Animal);
    qvm::smart<Animal> const same(one);
    qvm::smart<Animal> const other(new Animal);
    QVERIFY(one == same && !(one != same));
    QVERIFY(one != other && !(one == other));
    QVERIFY(one != qvm::smart<Animal>());
    QVERIFY(qvm::smart<Animal>() == qvm::smart<Animal>());
}

void tst_SmartHandle::convertsToBase()
{
    qvm::smart<Dog> const dog(new Dog);
    qvm::smart<Named> const named = dog;
    QCOMPARE(named.get(), static_cast<Named*>(dog.get()));
    QCOMPARE(named->label(), 7);
    QVERIFY(named == dog);
}

void tst_SmartHandle::convertsToSecondBase()
{
    qvm::smart<Dog> const dog(new Dog);
    qvm::smart<Animal> animal;
    animal = dog;
    QVERIFY(static_cast<void*>(animal.get()) != static_cast<void*>(dog.get()));
    QCOMPARE(animal.get(), static_cast<Animal*>(dog.get()));
    QCOMPARE(animal->legs, 4);
}

void tst_SmartHandle::baseHandleOutlivesDerivedHandle()
{
    qvm::smart<Dog> dog(new Dog);
    qvm::smart<Animal> animal(dog);
    dog.reset();
    QCOMPARE(alive.load(), 1);
    animal.reset();
    QCOMPARE(alive.load(), 0);
}

void tst_SmartHandle::derivedHandleOutlivesBaseHandle()
{
    qvm::smart<Dog> dog(new Dog);
    {
        qvm::smart<Animal> const animal(dog);
        qvm::smart<Named> const named(dog);
    }
    QCOMPARE(alive.load(), 1);
    dog.reset();
    QCOMPARE(alive.load(), 0);
}

void tst_SmartHandle::convertsToConst()
{
    qvm::smart<Animal> handle(new Animal);
    qvm::smart<Animal const> readOnly = handle;
    handle.reset();
    QCOMPARE(readOnly->legs, 4);
    readOnly.reset();
    QCOMPARE(alive.load(), 0);
}

void tst_SmartHandle::doesNotConvertDownwards()
{
    QVERIFY((std::is_convertible_v<qvm::smart<Dog>, qvm::smart<Animal>>));
    QVERIFY((!std::is_convertible_v<qvm::smart<Animal>, qvm::smart<Dog>>));
    QVERIFY((!std::is_convertible_v<qvm::smart<Animal const>, qvm::smart<Animal>>));
    QVERIFY((!std::is_convertible_v<Animal*, qvm::smart<Animal>>));
    QVERIFY((!std::is_convertible_v<qvm::smart<Animal>, bool>));
}

void tst_SmartHandle::deleterIsCalledOnceWithTheHandlee()
{
    Animal animal;
    {
        qvm::smart<Animal> const first(&animal, remember);
        qvm::smart<Animal> const second(first);
        QCOMPARE(second.get(), &animal);
    }
    QCOMPARE(deleted, QVector<void*>{&animal});
    QCOMPARE(alive.load(), 1);
}

void tst_SmartHandle::deleterGetsTheOriginalPointerThroughAnotherBase()
{
    auto* const original = new Dog;
    qvm::smart<Dog> dog(original, deleteDog);
    qvm::smart<Animal> animal(dog);
    dog.reset();
    QVERIFY(deleted.isEmpty());
    animal.reset();
    QCOMPARE(deleted, QVector<void*>{original});
}

void tst_SmartHandle::deleterIsCalledWithNull()
{
    {
        qvm::smart<Animal> const handle(nullptr, remember);
        QVERIFY(handle.null());
    }
    QCOMPARE(deleted, QVector<void*>{nullptr});
}

void tst_SmartHandle::nullDeleterDeletes()
{
    qvm::smart<Animal> handle(new Animal, nullptr);
    handle.reset();
    QCOMPARE(alive.load(), 0);
    qvm::smart<Animal> nothing(nullptr, nullptr);
    nothing.reset();
    QVERIFY(nothing.null());
}

void tst_SmartHandle::handleeMayResetTheHandleItDiesThrough()
{
    qvm::smart<Animal> handle;
    handle.reset(new LastHandle(handle));
    handle.reset();
    QVERIFY(handle.null());
    QCOMPARE(alive.load(), 0);
}

void tst_SmartHandle::handleOnItself()
{
    struct Node : Animal {
        qvm::smart<Node> next;
    };
    qvm::smart<Node> node(new Node);
    node->next = node;
    Node* const raw = node.get();
    node.reset();
    QCOMPARE(alive.load(), 1);
    raw->next.reset();
    QCOMPARE(alive.load(), 0);
}

void tst_SmartHandle::containersOfHandles()
{
    QVector<qvm::smart<Animal>> handles(1000, qvm::smart<Animal>(new Animal));
    QCOMPARE(alive.load(), 1);
    handles.remove(0, 999);
    QCOMPARE(alive.load(), 1);
    handles.clear();
    QCOMPARE(alive.load(), 0);
}

void tst_SmartHandle::threadsCopyAndRelease()
{
    int const rounds = support::rounds(20000);
    std::vector<std::thread> threads;
    {
        qvm::smart<Dog> const dog(new Dog, deleteDog);
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([mine = dog, rounds] {
                for (int round = 0; round < rounds; ++round) {
                    qvm::smart<Animal> animal(mine);
                    qvm::smart<Animal> const second(animal);
                    animal.reset();
                }
            });
        }
    }
    for (std::thread& thread : threads)
        thread.join();
    threads.clear();
    QCOMPARE(deleted.size(), 1);
    QCOMPARE(alive.load(), 0);
}

QTEST_GUILESS_MAIN(tst_SmartHandle)
#include "tst_SmartHandle.moc"
