# dependencyordering tests
