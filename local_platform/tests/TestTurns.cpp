// SPDX-License-Identifier: MIT
#include "base/Turns.h"

#include <QtTest>
#include <atomic>
#include <memory>
#include <thread>
#include <vector>

using local_platform::Turns;
using Outcome = Turns::Outcome;

namespace {

constexpr auto anHour = std::chrono::hours(1);

/// A client's request in a thread of its own: it waits for its turn and notes when that came.
class Request
{
public:
    Request(Turns& turns, const std::string& client, std::string name, std::vector<std::string>& order,
        std::chrono::milliseconds patience = anHour)
        : thread_([this, &turns, client, name = std::move(name), &order, patience] {
            const Turns::Turn turn(
                turns, client, std::chrono::steady_clock::now() + patience, [this] { return !isGone_; });
            outcome_ = turn.outcome();
            if (outcome_ == Outcome::Taken)
                order.push_back(name); // only the holder of the one place writes
        })
    {
    }
    ~Request() { thread_.join(); }

    void leave() { isGone_ = true; }
    Outcome outcome() const { return outcome_; }

private:
    std::atomic<bool> isGone_{false};
    std::atomic<Outcome> outcome_{Outcome::Waiting};
    std::thread thread_;
};

} // namespace

class TestTurns : public QObject
{
    Q_OBJECT

private slots:
    void clientsTakeTurns_data()
    {
        QTest::addColumn<QStringList>("arrivals"); // a client's letter and a number
        QTest::addColumn<unsigned>("queue");
        QTest::addColumn<QStringList>("order");
        QTest::addColumn<QStringList>("refused");
        QTest::newRow("one client in its order")
            << QStringList{"a1", "a2", "a3"} << 9u << QStringList{"a1", "a2", "a3"} << QStringList{};
        QTest::newRow("many of one do not keep another waiting")
            << QStringList{"a1", "a2", "a3", "b1", "c1", "b2"} << 9u
            << QStringList{"a1", "b1", "c1", "a2", "b2", "a3"} << QStringList{};
        QTest::newRow("a full queue refuses who has most in it")
            << QStringList{"a1", "a2", "a3"} << 2u << QStringList{"a1", "a2"} << QStringList{"a3"};
        QTest::newRow("a full queue makes room for who has less in it") << QStringList{"a1", "a2", "a3",
            "b1"} << 3u << QStringList{"a1", "b1", "a2"} << QStringList{"a3"};
        QTest::newRow("a full queue of equals refuses the next")
            << QStringList{"a1", "b1", "c1"} << 2u << QStringList{"a1", "b1"} << QStringList{"c1"};
    }

    void clientsTakeTurns()
    {
        QFETCH(QStringList, arrivals);
        QFETCH(unsigned, queue);
        QFETCH(QStringList, order);
        QFETCH(QStringList, refused);
        Turns turns(1, queue);
        std::vector<std::string> came;
        std::vector<std::unique_ptr<Request>> requests;
        {
            const Turns::Turn first(
                turns, "z", std::chrono::steady_clock::now() + anHour, [] { return true; });
            QCOMPARE(first.outcome(), Outcome::Taken);
            for (const QString& arrival : arrivals) {
                requests.push_back(std::make_unique<Request>(
                    turns, arrival.left(1).toStdString(), arrival.toStdString(), came));
                QTRY_VERIFY(waitingOrRefused(turns, requests));
            }
            for (int i = 0; i < arrivals.size(); ++i)
                QTRY_COMPARE(requests.at(static_cast<std::size_t>(i))->outcome(),
                    refused.contains(arrivals[i]) ? Outcome::Full : Outcome::Waiting);
        }
        requests.clear();
        QStringList inOrder;
        for (const std::string& name : came)
            inOrder += QString::fromStdString(name);
        QCOMPARE(inOrder, order);
    }

    void whoLeavesTakesNoTurn()
    {
        Turns turns(1, 9);
        std::vector<std::string> came;
        {
            auto first = std::make_unique<Turns::Turn>(
                turns, "z", std::chrono::steady_clock::now() + anHour, [] { return true; });
            Request gone(turns, "a", "gone", came);
            Request late(turns, "b", "late", came, std::chrono::milliseconds(1));
            Request patient(turns, "c", "patient", came);
            gone.leave();
            QTRY_COMPARE(gone.outcome(), Outcome::Unwanted);
            QTRY_COMPARE(late.outcome(), Outcome::TooLate);
            QTRY_COMPARE(turns.waiting(), std::size_t{1});
            first.reset();
            QTRY_COMPARE(patient.outcome(), Outcome::Taken);
        }
        QCOMPARE(came, std::vector<std::string>{"patient"});
    }

private:
    /// Whether every request has come to its place in the queue, or been sent away.
    static bool waitingOrRefused(const Turns& turns, const std::vector<std::unique_ptr<Request>>& requests)
    {
        const auto refused = std::count_if(requests.begin(), requests.end(),
            [](const auto& request) { return request->outcome() == Outcome::Full; });
        return turns.waiting() + static_cast<std::size_t>(refused) == requests.size();
    }
};

QTEST_GUILESS_MAIN(TestTurns)
#include "TestTurns.moc"
