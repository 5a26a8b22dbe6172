#!/usr/bin/env python3
"""Runs a GitHub Actions workflow here, as a runner would, for the workflows that Docs/ shows.

    run-workflow.py <workflow.yml> --repo <git repository> --ref refs/tags/<tag> --work <folder>
                    [--secret NAME=VALUE]... [--env NAME=VALUE]... [--path DIR]...

Jobs run in the order their "needs" give, each matrix entry in a checkout of its own under --work. "run"
steps go to bash as the runner's bash shell runs them ("-eo pipefail", expressions filled into the script
first), with the workflow's, the job's and the step's environment. Three actions are known:
actions/checkout (a clone of --repo at the pushed ref, or at the "ref" input), actions/upload-artifact
and actions/download-artifact (folders under --work). Anything else the file asks for (another action, an
expression this doesn't know, a key it doesn't read) stops the run, so that a workflow can't pass here by
using something that was never run. Exit code: 0 when every job succeeded, 1 when one failed, 2 when the
workflow asks for something unknown.
"""

import argparse
import fnmatch
import json
import os
import re
import shutil
import subprocess
import sys

import yaml


class Unsupported(Exception):
    pass


# --- Expressions: the part of the language the examples use -------------------------------------------------

TOKEN = re.compile(r"\s*(?:(?P<str>'(?:[^']|'')*')|(?P<num>\d+)|(?P<op>==|!=|&&|\|\||[!().,\[\]])|(?P<name>[A-Za-z_][\w-]*))")


def tokenize(text):
    tokens, pos = [], 0
    text = text.strip()
    while pos < len(text):
        match = TOKEN.match(text, pos)
        if not match or match.end() == pos:
            raise Unsupported(f"expression '{text}': can't read it from '{text[pos:]}'")
        pos = match.end()
        kind = match.lastgroup
        tokens.append((kind, match.group(kind)))
    return tokens


class Evaluator:
    def __init__(self, contexts, status):
        self.contexts = contexts
        self.status = status  # "success", "failure" or "cancelled": how the job or the steps so far went

    def evaluate(self, text):
        self.tokens, self.pos = tokenize(text), 0
        value = self.parse_or()
        if self.pos != len(self.tokens):
            raise Unsupported(f"expression '{text}': unexpected '{self.tokens[self.pos][1]}'")
        return value

    def peek(self):
        return self.tokens[self.pos] if self.pos < len(self.tokens) else (None, None)

    def take(self, value=None):
        kind, text = self.peek()
        if kind is None or (value is not None and text != value):
            raise Unsupported(f"expression: expected '{value}'")
        self.pos += 1
        return kind, text

    def parse_or(self):
        value = self.parse_and()
        while self.peek()[1] == "||":
            self.take()
            right = self.parse_and()
            value = value or right
        return value

    def parse_and(self):
        value = self.parse_equality()
        while self.peek()[1] == "&&":
            self.take()
            right = self.parse_equality()
            value = value and right
        return value

    def parse_equality(self):
        value = self.parse_unary()
        while self.peek()[1] in ("==", "!="):
            op = self.take()[1]
            right = self.parse_unary()
            value = (value == right) if op == "==" else (value != right)
        return value

    def parse_unary(self):
        if self.peek()[1] == "!":
            self.take()
            return not self.parse_unary()
        return self.parse_primary()

    def parse_primary(self):
        kind, text = self.take()
        if kind == "str":
            return text[1:-1].replace("''", "'")
        if kind == "num":
            return int(text)
        if text == "(":
            value = self.parse_or()
            self.take(")")
            return value
        if kind != "name":
            raise Unsupported(f"expression: unexpected '{text}'")
        if self.peek()[1] == "(":
            return self.call(text)
        if text in ("true", "false"):
            return text == "true"
        if text not in self.contexts:
            raise Unsupported(f"expression: unknown context '{text}'")
        value = self.contexts[text]
        while self.peek()[1] in (".", "["):
            if self.take()[1] == ".":
                key = self.take()[1]
            else:
                key = self.parse_or()
                self.take("]")
            value = value.get(key, "") if isinstance(value, dict) else ""
        return value

    def call(self, name):
        self.take("(")
        args = []
        while self.peek()[1] != ")":
            args.append(self.parse_or())
            if self.peek()[1] == ",":
                self.take()
        self.take(")")
        if name == "fromJSON" and len(args) == 1:
            return json.loads(args[0])
        if name == "toJSON" and len(args) == 1:
            return json.dumps(args[0])
        if name in ("always", "success", "failure", "cancelled") and not args:
            return {"always": True, "success": self.status == "success", "failure": self.status == "failure",
                    "cancelled": self.status == "cancelled"}[name]
        raise Unsupported(f"expression: unknown function {name}()")


EXPRESSION = re.compile(r"\$\{\{(.*?)\}\}", re.S)


def as_text(value):
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, (list, dict)):
        return json.dumps(value)
    return str(value)


def fill(value, evaluator):
    """A value with its ${{ }} filled in: the value itself when it is one expression alone, else text."""
    if isinstance(value, str):
        whole = EXPRESSION.fullmatch(value.strip())
        if whole:
            return evaluator.evaluate(whole.group(1))
        return EXPRESSION.sub(lambda m: as_text(evaluator.evaluate(m.group(1))), value)
    if isinstance(value, list):
        return [fill(item, evaluator) for item in value]
    if isinstance(value, dict):
        return {key: fill(item, evaluator) for key, item in value.items()}
    return value


def condition(text, evaluator):
    if text is None:
        return evaluator.evaluate("success()")
    if isinstance(text, bool):
        return text
    text = str(text).strip()
    whole = EXPRESSION.fullmatch(text)
    return bool(evaluator.evaluate(whole.group(1) if whole else text))


def require_keys(where, mapping, known):
    unknown = set(mapping) - set(known)
    if unknown:
        raise Unsupported(f"{where}: unknown keys {sorted(unknown)}")


# --- The runner -------------------------------------------------------------------------------------------

class Runner:
    def __init__(self, options):
        self.options = options
        self.work = os.path.abspath(options.work)
        self.artifacts = os.path.join(self.work, "artifacts")
        os.makedirs(self.artifacts, exist_ok=True)
        self.github = {
            "ref": options.ref,
            "ref_name": options.ref.rsplit("/", 1)[-1],
            "event_name": "push",
            "event": {"repository": {"default_branch": options.default_branch}},
        }
        self.secrets = dict(item.split("=", 1) for item in options.secret)
        self.base_env = {key: os.environ[key] for key in ("HOME", "LANG", "TMPDIR") if key in os.environ}
        self.base_env.update(item.split("=", 1) for item in options.env)
        self.base_env["PATH"] = os.pathsep.join(options.path + [os.environ.get("PATH", "/usr/bin:/bin")])
        self.checkouts = 0

    def run(self, workflow):
        require_keys("workflow", workflow, ["name", "on", "concurrency", "permissions", "defaults", "env", "jobs"])
        shell = workflow.get("defaults", {}).get("run", {}).get("shell", "bash")
        if shell != "bash":
            raise Unsupported(f"shell '{shell}': only bash is run here")
        self.workflow_env = workflow.get("env", {})
        jobs = workflow["jobs"]
        results, outputs = {}, {}
        pending = list(jobs)
        while pending:
            ready = [name for name in pending if all(need in results for need in self.needs(jobs[name]))]
            if not ready:
                raise Unsupported(f"jobs {pending}: their needs can't all be met")
            name = ready[0]
            pending.remove(name)
            results[name], outputs[name] = self.run_job(name, jobs[name], results, outputs)
            print(f"== job {name}: {results[name]}", flush=True)
        return results

    @staticmethod
    def needs(job):
        needs = job.get("needs", [])
        return [needs] if isinstance(needs, str) else needs

    def run_job(self, name, job, results, outputs):
        require_keys(f"job {name}", job, ["needs", "if", "runs-on", "outputs", "strategy", "env", "steps"])
        needs = {need: {"result": results[need], "outputs": outputs[need]} for need in self.needs(job)}
        status = "success" if all(results[need] == "success" for need in needs) else "failure"
        evaluator = Evaluator({"github": self.github, "needs": needs, "secrets": self.secrets, "vars": {}}, status)
        if not condition(job.get("if"), evaluator):
            return "skipped", {}
        strategy = job.get("strategy", {})
        require_keys(f"job {name} strategy", strategy, ["fail-fast", "matrix"])
        entries = [{}]
        for key, values in fill(strategy.get("matrix", {}), evaluator).items():
            if not isinstance(values, list):
                raise Unsupported(f"job {name}: matrix '{key}' is not a list")
            entries = [dict(entry, **{key: value}) for entry in entries for value in values]
        result, job_outputs = "success", {}
        for entry in entries:
            contexts = {"github": self.github, "needs": needs, "secrets": self.secrets, "vars": {}, "matrix": entry}
            entry_result, job_outputs = self.run_entry(name, job, contexts)
            if entry_result != "success":
                result = "failure"
        return result, job_outputs

    def run_entry(self, name, job, contexts):
        self.checkouts += 1
        workspace = os.path.join(self.work, f"{self.checkouts:02d}-{name}")
        os.makedirs(workspace)
        print(f"== job {name} {json.dumps(contexts['matrix']) if contexts['matrix'] else ''} in {workspace}", flush=True)
        steps, status = {}, "success"
        contexts = dict(contexts, steps=steps)
        job_env = fill(dict(self.workflow_env, **job.get("env", {})), Evaluator(contexts, status))
        for index, step in enumerate(job["steps"]):
            require_keys(f"job {name} step {index + 1}", step, ["id", "name", "if", "run", "uses", "with", "env"])
            evaluator = Evaluator(contexts, status)
            if not condition(step.get("if"), evaluator):
                continue
            outcome, step_outputs = self.run_step(step, evaluator, workspace, job_env)
            if "id" in step:
                steps[step["id"]] = {"outcome": outcome, "outputs": step_outputs}
            if outcome != "success":
                status = "failure"
        job_outputs = fill(job.get("outputs", {}), Evaluator(contexts, status))
        return status, {key: as_text(value) for key, value in job_outputs.items()}

    def run_step(self, step, evaluator, workspace, job_env):
        label = step.get("name") or step.get("run", step.get("uses", "")).splitlines()[0]
        print(f"-- {label}", flush=True)
        if "uses" in step:
            try:
                self.use(step["uses"], fill(step.get("with", {}), evaluator), workspace)
                return "success", {}
            except subprocess.CalledProcessError as error:
                print(f"   {step['uses']} failed: {error}", flush=True)
                return "failure", {}
        env = dict(self.base_env, **{key: as_text(value) for key, value in job_env.items()})
        env.update({key: as_text(value) for key, value in fill(step.get("env", {}), evaluator).items()})
        output_file = os.path.join(self.work, f"output-{self.checkouts:02d}-{id(step)}")
        open(output_file, "w").close()
        env.update(GITHUB_OUTPUT=output_file, GITHUB_WORKSPACE=workspace, GITHUB_REF=self.github["ref"],
                   GITHUB_REF_NAME=self.github["ref_name"], RUNNER_TEMP=self.work, CI="true", GITHUB_ACTIONS="true")
        script = os.path.join(self.work, f"step-{self.checkouts:02d}.sh")
        with open(script, "w") as handle:
            handle.write(fill(step["run"], evaluator))
        code = subprocess.call(["bash", "--noprofile", "--norc", "-eo", "pipefail", script], cwd=workspace, env=env)
        if code != 0:
            print(f"   exit code {code}", flush=True)
        return ("success" if code == 0 else "failure"), read_outputs(output_file)

    def use(self, action, inputs, workspace):
        if action == "actions/checkout@v4":
            require_keys(action, inputs, ["ref"])
            subprocess.run(["git", "clone", "--quiet", self.options.repo, workspace], check=True)
            subprocess.run(["git", "-c", "advice.detachedHead=false", "checkout", "--quiet",
                            inputs.get("ref") or self.github["ref"]], cwd=workspace, check=True)
        elif action == "actions/upload-artifact@v4":
            require_keys(action, inputs, ["name", "path"])
            target = os.path.join(self.artifacts, inputs["name"])
            if os.path.exists(target):
                raise subprocess.CalledProcessError(1, action, f"an artifact named {inputs['name']} exists")
            paths = [line.strip() for line in inputs["path"].splitlines() if line.strip()]
            found = [path for path in paths if os.path.exists(os.path.join(workspace, path))]
            if not found:
                print(f"   warning: no files found at {paths}; nothing uploaded", flush=True)
                return
            base = os.path.commonpath([os.path.dirname(os.path.join(workspace, path)) for path in found])
            for path in found:
                source = os.path.join(workspace, path)
                destination = os.path.join(target, os.path.relpath(source, base))
                os.makedirs(os.path.dirname(destination), exist_ok=True)
                (shutil.copytree if os.path.isdir(source) else shutil.copy2)(source, destination)
        elif action == "actions/download-artifact@v4":
            require_keys(action, inputs, ["name", "pattern", "path"])
            names = sorted(os.listdir(self.artifacts))
            if "name" in inputs:
                if inputs["name"] not in names:
                    raise subprocess.CalledProcessError(1, action, f"no artifact named {inputs['name']}")
                places = {inputs["name"]: inputs.get("path", ".")}
            else:
                pattern = inputs.get("pattern", "*")
                places = {name: os.path.join(inputs.get("path", "."), name) for name in names if fnmatch.fnmatchcase(name, pattern)}
            for name, place in places.items():
                shutil.copytree(os.path.join(self.artifacts, name), os.path.join(workspace, place), dirs_exist_ok=True)
        else:
            raise Unsupported(f"action {action}: not known here")


def read_outputs(path):
    outputs, lines = {}, open(path).read().splitlines()
    while lines:
        line = lines.pop(0)
        if "<<" in line and ("=" not in line or line.index("<<") < line.index("=")):
            key, marker = line.split("<<", 1)
            value = []
            while lines and lines[0] != marker:
                value.append(lines.pop(0))
            lines = lines[1:]
            outputs[key] = "\n".join(value)
        elif "=" in line:
            key, value = line.split("=", 1)
            outputs[key] = value
    return outputs


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("workflow")
    parser.add_argument("--repo", required=True)
    parser.add_argument("--ref", required=True)
    parser.add_argument("--default-branch", default="main")
    parser.add_argument("--work", required=True)
    parser.add_argument("--secret", action="append", default=[])
    parser.add_argument("--env", action="append", default=[])
    parser.add_argument("--path", action="append", default=[])
    options = parser.parse_args()
    with open(options.workflow) as handle:
        workflow = yaml.safe_load(handle)
    # YAML 1.1 reads the key "on" as true.
    if True in workflow:
        workflow["on"] = workflow.pop(True)
    try:
        results = Runner(options).run(workflow)
    except Unsupported as error:
        print(f"run-workflow: {error}", file=sys.stderr)
        return 2
    print("== jobs: " + ", ".join(f"{name} {result}" for name, result in results.items()), flush=True)
    return 0 if all(result in ("success", "skipped") for result in results.values()) else 1


if __name__ == "__main__":
    sys.exit(main())
