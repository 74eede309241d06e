"""Fixtures that the engine's Python tests share."""

import shutil

import pytest
from hypothesis import HealthCheck, settings

# The same examples in every run. Each is a file and a session of the program, which takes its time.
settings.register_profile("engine", derandomize=True, database=None, deadline=None,
                          suppress_health_check=list(HealthCheck))
settings.load_profile("engine")
pytest.register_assert_rewrite("statements", "oracle", "notation", "examples")
from statements import Kelvo  # noqa: E402 -- only what is imported after that is rewritten


@pytest.fixture
def kelvo(tmp_path):
    return Kelvo(tmp_path)


@pytest.fixture
def home(kelvo):
    """The directory of the files that name others; what lies beside it is out of their reach."""
    kelvo.path("home").mkdir()
    kelvo.path("other").mkdir()
    return kelvo.path("home")


@pytest.fixture(scope="session")
def kelvo_factory(tmp_path_factory):
    """Makes one for each example of a property, in a folder of its own; the folder of the one before is removed."""
    made = []

    def make():
        for folder in made:
            shutil.rmtree(folder)
        made[:] = [tmp_path_factory.mktemp("example")]
        return Kelvo(made[0])

    return make
