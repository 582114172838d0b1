#!/usr/bin/env python3
"""The benchmark's arithmetic and its table."""

import unittest

import bench_test
import metrics
from metrics import Comparison, Result, Sample


def samples(*values):
    """Samples with these wall times, half of that as CPU time, and one KiB a second as peak."""
    return [Sample(value, value / 2, int(value)) for value in values]


class Medians(unittest.TestCase):
    def test_an_outlier_does_not_change_the_median(self):
        self.assertEqual(metrics.median(samples(1, 3, 900), "wall"), 3)

    def test_the_median_of_an_even_number_is_between_two(self):
        self.assertEqual(metrics.median(samples(1, 2, 4, 8), "wall"), 3)

    def test_every_metric_has_a_median(self):
        self.assertEqual(metrics.median(samples(4, 8, 6), "cpu"), 3)
        self.assertEqual(metrics.median(samples(4, 8, 6), "peak_kib"), 6)


class Comparisons(unittest.TestCase):
    def test_has_the_ratio_of_medians_and_the_median_of_ratios(self):
        found = metrics.compare(samples(1, 2, 9), samples(4, 2, 3), "wall", "curl", 0.9)
        self.assertEqual((found.baseline, found.metric), ("curl", "wall ms"))
        self.assertEqual((found.ours, found.theirs), (2000, 3000))
        self.assertAlmostEqual(found.ratio, 2 / 3)
        self.assertAlmostEqual(found.paired_ratio, 1)

    def test_different_numbers_of_iterations_are_an_error(self):
        with self.assertRaises(ValueError):
            metrics.compare(samples(1, 2), samples(1), "wall", "curl")

    def test_a_baseline_of_zero_is_not_a_division_by_zero(self):
        self.assertGreater(metrics.compare(samples(1), samples(0), "wall", "curl").ratio, 1)

    def test_a_target_is_met_up_to_its_limit(self):
        self.assertEqual(Comparison("", "", 5, 10, 0.9).outcome, "met")
        self.assertEqual(Comparison("", "", 9, 10, 0.9).outcome, "met")
        self.assertEqual(Comparison("", "", 9.01, 10, 0.9).outcome, "missed")

    def test_without_a_target_there_is_no_outcome(self):
        self.assertEqual(Comparison("", "", 5, 10).outcome, "")


class Table(unittest.TestCase):
    def test_shows_values_ratios_and_targets(self):
        results = [
            Result("request", comparisons=[Comparison("curl", "wall ms", 2, 4, 0.9, 0.55)]),
            Result("list-10", comparisons=[Comparison("body", "MiB", 0.125, 1)]),
        ]
        self.assertEqual(
            metrics.table(results),
            "| workload | compared with | metric  | akhostmgmt | baseline "
            "| ratio | paired ratio | target | outcome |\n"
            "| -------- | ------------- | ------- | ---------: | -------: "
            "| ----: | -----------: | -----: | ------: |\n"
            "| request  | curl          | wall ms |       2.00 |     4.00 "
            "| 0.500 |        0.550 |    0.9 |     met |\n"
            "| list-10  | body          | MiB     |       0.12 |     1.00 "
            "| 0.125 |              |        |         |\n")


if __name__ == "__main__":
    bench_test.run()
