"""What a run is said to show, on rounds made up for it."""

import re
import unittest

import results


def row(ours, peers, mark=1.0, better="less", against="", name="a row", limit=None):
    return results.judge("bench_x", {
        "row": name, "unit": "ns", "better": better, "mark": mark, "against": against,
        "contenders": {"ours": ours, **peers}, "limit": {"limit": limit} if limit else {}})


class VerdictTest(unittest.TestCase):
    def test_a_verdict_needs_the_mark_outside_the_noise(self):
        steady = {"peer": [100] * 21}
        for ours, mark, better, expected in [
                ([90, 91, 92, 93, 94], 1.0, "less", "reached"),
                ([90, 98, 99, 101, 102], 1.0, "less", "at the mark"),  # the median alone is below
                ([50, 98, 98, 98, 400], 1.0, "less", "at the mark"),
                ([50, 400] * 5 + [98] * 11, 1.0, "less", "reached"),  # odd rounds decide nothing
                ([50] + [400] * 6 + [98] * 14, 1.0, "less", "at the mark"),
                ([102, 103, 104, 105, 106], 1.0, "less", "NOT reached"),
                ([102, 103, 104, 105, 106], 1.0, "more", "reached"),
                ([90, 91, 92, 93, 94], 1.0, "more", "NOT reached"),
                ([90, 91, 92, 93, 94], None, "less", "")]:
            with self.subTest(ours=ours, mark=mark, better=better):
                self.assertEqual(row(ours, steady, mark, better)["verdict"], expected)

    def test_a_machine_that_is_slow_for_a_round_is_slow_for_both(self):
        peer = {"peer": [80, 90, 100, 110, 120]}
        for ours, expected in [([95] * 5, "at the mark"), ([76, 85, 95, 105, 114], "reached")]:
            with self.subTest(ours=ours):
                self.assertEqual(row(ours, peer)["verdict"], expected)

    def test_a_limit_beyond_the_mark_is_told_when_the_mark_is_not_reached(self):
        for ours, limit, better, expected in [
                (120, 110, "less", "NOT reached, limit 1.10"), (120, 90, "less", "NOT reached"),
                (95, 110, "less", "reached"), (80, 90, "more", "NOT reached, limit 0.90"),
                (80, 110, "more", "NOT reached"), (120, 0, "less", "NOT reached")]:
            with self.subTest(ours=ours, limit=limit, better=better):
                made = row([ours] * 5, {"peer": [100] * 5}, better=better, limit=[limit] * 5)
                self.assertEqual(made["verdict"], expected)

    def test_the_ratio_is_to_the_best_peer_or_to_the_one_named(self):
        peers = {"slow": [200] * 3, "fast": [50] * 3}
        for better, against, ratio in [("less", "", 2.0), ("more", "", 0.5), ("less", "slow", 0.5)]:
            with self.subTest(better=better, against=against):
                self.assertEqual(row([100] * 3, peers, None, better, against)["ratio"], ratio)

    def test_a_row_without_a_peer_or_with_times_of_zero_has_no_ratio(self):
        for peers in ({}, {"peer": [0, 0, 5]}):
            made = row([100] * 3, peers)
            self.assertIsNone(made["ratio"])
            self.assertEqual(made["verdict"], "")
            results.result_table([made])


class MoreRoundsTest(unittest.TestCase):
    def test_the_filter_finds_the_rows_and_no_other(self):
        names = ["number(double, 'g', 6)", "burst, threads: 4: ns/call, first", "a + b*c"]
        filter_for = re.compile(results.filter_for(names))
        for name in names:
            self.assertTrue(filter_for.search(name), name)
            self.assertFalse(filter_for.search(name + "0"), name)
        self.assertFalse(filter_for.search("a + bbc"))

    def test_rounds_are_added_to_everybody(self):
        def raw(n):
            return {"contenders": {"ours": [n], "peer": [2 * n]}, "limit": {"clock": [3 * n]}}

        added = raw(1)
        results.add_rounds(added, raw(10))
        self.assertEqual(added, {"contenders": {"ours": [1, 10], "peer": [2, 20]},
                                 "limit": {"clock": [3, 30]}})


class ComparisonTest(unittest.TestCase):
    def test_only_rows_beyond_the_noise_of_both_have_moved(self):
        def run(shift):
            return [row([90 + shift, 100 + shift, 110 + shift], {"peer": [100] * 3}, name="noisy"),
                    row([100 + shift] * 4 + [100], {"peer": [100] * 5}, name="drifting"),
                    row([100 + shift, 101 + shift, 102 + shift], {"peer": [100] * 3}, name="steady"),
                    row([100 + shift] * 20 + [100], {"peer": [100] * 21}, name="one is odd"),
                    row([100 + 2 * shift] * 3, {"peer": [100] * 3}, name="more", better="more")]

        names = [new["row"] for _, new in results.moved(run(0), run(10))]
        self.assertEqual(names, ["one is odd", "steady", "more"])  # the worst first: more is better there
        text = results.comparison(run(0), run(10) + [row([1], {"peer": [1]}, name="added")])
        self.assertIn("worse by 10 %", text)
        self.assertIn("better by 20 %", text)
        self.assertIn("3 of 5 rows moved", text)
        self.assertIn("0 are gone, 1 are new", text)


if __name__ == "__main__":
    unittest.main()
