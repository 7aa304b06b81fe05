# loading tests
