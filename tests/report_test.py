import unittest
import xml.etree.ElementTree as ElementTree

import report

SHARD = """
<testsuites>
  <testsuite name="Labels">
    <testcase name="A" status="run" result="completed"/>
    <testcase name="B" status="run" result="completed"><failure message="1"/><failure message="2"/></testcase>
    <testcase name="C" status="run" result="skipped"><skipped message="no display"/></testcase>
    <testcase name="DISABLED_D" status="notrun" result="suppressed"/>
    <testcase name="E" status="run" result="completed"/>
  </testsuite>
</testsuites>"""

ALL_PASSED = '<testsuites><testsuite><testcase name="A" status="run" result="completed"/></testsuite></testsuites>'


def run(cases, reports):
    lines = "".join(f'<testcase name="{name}" status="{status}"/>' for name, status in cases)
    trees = {name: ElementTree.fromstring(text) for name, text in reports.items()}
    total = report.count_run(ElementTree.fromstring(f"<testsuite>{lines}</testsuite>"), trees)
    return total["passed"], total["failed"], total["skipped"]


class CountRun(unittest.TestCase):
    def test_cases_without_a_report_count_as_themselves(self):
        cases = [("a", "run"), ("b", "run"), ("c", "fail"), ("d", "notrun"), ("e", "disabled")]
        self.assertEqual(run(cases, {}), (2, 1, 2))

    def test_tests_of_a_report_count_in_place_of_their_case(self):
        self.assertEqual(run([("unit.0", "fail"), ("other", "run")], {"unit.0": SHARD}), (3, 1, 2))

    def test_a_process_that_failed_without_a_failed_test_is_one_failure_more(self):
        self.assertEqual(run([("unit.0", "fail")], {"unit.0": ALL_PASSED}), (1, 1, 0))

    def test_reports_of_cases_that_did_not_run_are_not_counted(self):
        self.assertEqual(run([("unit.0", "run")], {"unit.0": ALL_PASSED, "unit.1": SHARD}), (1, 0, 0))


if __name__ == "__main__":
    unittest.main()
