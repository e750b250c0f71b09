import unittest

import table


def median(name, time, unit="ms", **more):
    return {"run_name": name, "aggregate_name": "median", "real_time": time, "time_unit": unit, **more}


DATA = {
    "benchmarks": [
        median("Label8/morvane/blobs/2048", 3.0, items_per_second=1.4e9),
        {**median("Label8/morvane/blobs/2048", 99.0), "aggregate_name": "mean"},
        {"run_name": "Label8/morvane/blobs/2048", "run_type": "iteration", "real_time": 99.0, "time_unit": "ms"},
        median("Label8/morvane-walk/blobs/2048", 1.0),
        median("Label8/opencv-wu/blobs/2048", 9000.0, "us"),
        median("Label8/opencv-grana/blobs/2048", 6.0),
        median("Label8/morvane/blobs/256", 0.25),
        median("Normals/morvane/depth/wrapped/512", 7.5),
    ]
}


class ReadMedians(unittest.TestCase):
    def setUp(self):
        self.operators = table.read_medians(DATA)

    def test_keeps_medians_alone_in_milliseconds(self):
        self.assertEqual(
            self.operators["Label8"]["blobs", 2048],
            {
                "morvane": (3.0, 1.4e9),
                "morvane-walk": (1.0, None),
                "opencv-wu": (9.0, None),
                "opencv-grana": (6.0, None),
            },
        )

    def test_a_case_may_have_several_parts(self):
        self.assertEqual(self.operators["Normals"]["depth/wrapped", 512], {"morvane": (7.5, None)})

    def test_passes_over_a_benchmark_that_failed(self):
        failed = {"benchmarks": [median("Label8/morvane/blobs/2048", 0.0, error_occurred=True)]}
        self.assertFalse(table.read_medians(failed))


class Table(unittest.TestCase):
    def test_compares_with_the_fastest_peer_and_no_road_of_our_own(self):
        self.assertEqual(
            table.table("Label8", table.read_medians(DATA)["Label8"]),
            [
                "Label8",
                "  case   size  morvane ms   Mpx/s  morvane-walk ms  opencv-wu ms  opencv-grana ms  ratio  to",
                "  blobs   256       0.250       -                -             -                -      -  -",
                "  blobs  2048       3.000  1400.0            1.000         9.000            6.000   0.50  opencv-grana",
            ],
        )


if __name__ == "__main__":
    unittest.main()
