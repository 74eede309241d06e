"""What the other files rely on: how rows and errors of a run are told apart."""


def test_rows_of_all_statements_come_in_order(kelvo):
    kelvo.run("CREATE FILE a.h5")
    assert kelvo.rows("USE FILE a.h5", "SHOW USE FILE", "SHOW USE GROUP") == [str(kelvo.path("a.h5")), "/"]


def test_failed_statement_ends_the_run_with_its_status(kelvo):
    answer = kelvo.run("CREATE FILE a.h5", "USE FILE a.h5", "SHOW USE GROUP", "SHOW TYPE x", "SHOW USE GROUP")
    assert (answer.rows, answer.status, answer.message, answer.position) == (
        ["/"], -3, 'Object "/x" does not exist', None)


def test_text_that_is_no_statement_has_a_position(kelvo):
    assert kelvo.error("CREATE FILE a.h5", "USE a.h5")[::2] == (-1, 5)


def test_each_run_is_a_new_process(kelvo):
    kelvo.run("CREATE FILE a.h5", "USE FILE a.h5")
    assert kelvo.error("SHOW GROUP") == (-2, "No file is in use (USE FILE opens one)")
