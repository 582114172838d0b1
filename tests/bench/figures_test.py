#!/usr/bin/env python3
"""The benchmark's arithmetic and its tables."""

import json
import unittest

import bench_test
import figures
from figures import Result, Row, Sample


def samples(*values):
    """Samples whose wall times are given; half of it is CPU time, the peak a KiB a second."""
    return [Sample(value, value / 2, int(value)) for value in values]


class Medians(unittest.TestCase):
    def test_a_median_is_not_moved_by_one_odd_run(self):
        self.assertEqual(figures.median(samples(1, 3, 900), "wall"), 3)

    def test_the_median_of_an_even_number_is_between_two(self):
        self.assertEqual(figures.median(samples(1, 2, 4, 8), "wall"), 3)

    def test_every_figure_has_one(self):
        self.assertEqual(figures.median(samples(4, 8, 6), "cpu"), 3)
        self.assertEqual(figures.median(samples(4, 8, 6), "peak_kib"), 6)


class Ratios(unittest.TestCase):
    def test_both_ratios_are_given(self):
        found = figures.ratio(samples(1, 2, 9), samples(4, 2, 3), "wall", 0.9, "other")
        self.assertAlmostEqual(found.value, 2 / 3)
        self.assertAlmostEqual(found.median_of_ratios, 1)
        self.assertEqual(found.what, "wall / other")

    def test_rounds_of_different_number_are_an_error(self):
        with self.assertRaises(ValueError):
            figures.ratio(samples(1, 2), samples(1), "wall")

    def test_no_time_at_all_is_no_division_by_zero(self):
        self.assertGreater(figures.ratio(samples(1), samples(0), "wall").value, 1)

    def test_growth_is_that_of_the_cost_of_each_host(self):
        self.assertAlmostEqual(figures.growth("CPU", (10, 5), (1000, 500)).value, 1)
        self.assertAlmostEqual(figures.growth("CPU", (10, 5), (1000, 1000)).value, 2)
        self.assertAlmostEqual(figures.growth("CPU", (10, 10), (1000, 500)).value, 0.5)


class Aims(unittest.TestCase):
    def test_an_aim_is_met_up_to_its_limit(self):
        self.assertEqual(Result("", 0.5, 0.9).verdict, "met")
        self.assertEqual(Result("", 0.9, 0.9).verdict, "met")
        self.assertEqual(Result("", 0.901, 0.9).verdict, "missed")

    def test_without_an_aim_there_is_nothing_to_say(self):
        self.assertEqual(Result("", 0.5).verdict, "")

    def test_little_growth_is_met_and_more_is_missed(self):
        self.assertEqual(figures.growth("CPU", (10, 10), (100, 114)).verdict, "met")
        self.assertEqual(figures.growth("CPU", (10, 10), (100, 116)).verdict, "missed")


class Tables(unittest.TestCase):
    ROWS = [
        Row("request", {"tool": samples(1, 2, 3), "curl": samples(4, 4, 4)},
            [Result("wall / curl", 0.5, 0.9, 0.55), Result("told", 12)]),
        Row("delay", remark="not measured: no right to"),
    ]  # fmt: skip

    def test_programs_are_shown_with_their_medians(self):
        self.assertEqual(
            figures.program_table(self.ROWS),
            "| work    | program | runs | wall ms |  CPU ms | peak MiB |\n"
            "| ------- | ------- | ---: | ------: | ------: | -------: |\n"
            "| request | tool    |    3 | 2000.00 | 1000.00 |     0.00 |\n"
            "| request | curl    |    3 | 4000.00 | 2000.00 |     0.00 |\n")

    def test_results_are_shown_with_aims_and_remarks(self):
        self.assertEqual(
            figures.result_table(self.ROWS),
            "| work    | figure                    | of medians | of rounds | at most | aim |\n"
            "| ------- | ------------------------- | ---------: | --------: | ------: | --: |\n"
            "| request | wall / curl               |      0.500 |     0.550 |     0.9 | met |\n"
            "| request | told                      |     12.000 |           |         |     |\n"
            "| delay   | not measured: no right to |            |           |         |     |\n")

    def test_the_raw_figures_are_whole(self):
        first, second = json.loads(json.dumps(figures.raw(self.ROWS)))
        self.assertEqual(first["samples"]["tool"][1], {"wall": 2, "cpu": 1, "peak_kib": 2})
        self.assertEqual(
            first["results"][0],
            {"what": "wall / curl", "value": 0.5, "aim": 0.9, "median_of_ratios": 0.55,
             "verdict": "met"})  # fmt: skip
        self.assertEqual(second["remark"], "not measured: no right to")


if __name__ == "__main__":
    bench_test.run()
